#pragma once

#include "Platform/Foundation/Realtime.hpp"

#include <lv2/urid/urid.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>

namespace platform::lv2
{

/// The numbers that stand for URIs between host and plug-ins (LV2 URID): small,
/// counted from 1, and the same for the life of the table. Any thread; only the
/// first mention of a URI takes a lock, so that the audio callback may ask for
/// known ones.
class SymbolTable
{
public:
    /// More URIs than any session needs; a plug-in that invents them without end
    /// is answered 0 from there on.
    static constexpr std::uint32_t capacity = 65536;

    /// The table of the process.
    static SymbolTable &shared();

    SymbolTable() = default;
    SymbolTable(const SymbolTable &) = delete;
    SymbolTable &operator=(const SymbolTable &) = delete;

    /// The number of `uri`, given now if it has none; 0 when the table is full.
    LV2_URID map(std::string_view uri);
    /// The URI of a number, valid as long as the table; null for an unknown one.
    REALTIME const char *unmap(LV2_URID symbol) const noexcept;

    /// The table as the features `urid:map` and `urid:unmap`.
    ///@{
    /// The table as the features `urid:map` and `urid:unmap`.
    LV2_URID_Map *mapFeature() { return &mapFeature_; }
    LV2_URID_Unmap *unmapFeature() { return &unmapFeature_; }
    ///@}

private:
    struct Symbol {
        std::string uri;
        std::size_t hash;
        LV2_URID number;
        const Symbol *next;
    };
    using Page = std::array<std::atomic<const Symbol *>, 256>;

    const Symbol *find(std::string_view uri, std::size_t hash) const noexcept;

    // Published heads of chains that only ever grow at their head.
    std::array<std::atomic<const Symbol *>, 4096> buckets_{};
    // By number: pages are made as they are needed and never moved.
    std::array<std::atomic<Page *>, capacity / std::tuple_size_v<Page>> pages_{};

    std::mutex mutex_;
    std::deque<Symbol> symbols_;
    std::deque<Page> pageStorage_;

    LV2_URID_Map mapFeature_{this, [](LV2_URID_Map_Handle table, const char *uri) {
                                 return static_cast<SymbolTable *>(table)->map(uri);
                             }};
    LV2_URID_Unmap unmapFeature_{this, [](LV2_URID_Unmap_Handle table, LV2_URID symbol) {
                                     return static_cast<SymbolTable *>(table)->unmap(symbol);
                                 }};
};

} // namespace platform::lv2
