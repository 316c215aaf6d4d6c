#pragma once

#include <string_view>

/// Names of the W3C's vocabularies RDF and RDF Schema.
namespace platform::audio
{

inline constexpr std::string_view rdfType = "http://www.w3.org/1999/02/22-rdf-syntax-ns#type";
inline constexpr std::string_view rdfsSeeAlso = "http://www.w3.org/2000/01/rdf-schema#seeAlso";

} // namespace platform::audio
