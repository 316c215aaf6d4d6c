#pragma once

#include <optional>
#include <string>
#include <vector>

/// The middle one; not a number when there is none.
double median(std::vector<double> values);

/// Ours over theirs, run by run: what drifts from run to run falls out.
std::vector<double> ratios(const std::vector<double> &ours, const std::vector<double> &theirs);

/// What a benchmark found, for the page of all: a row as `rows.py` describes it.
struct Row {
    std::string what;
    std::string peer;            ///< what it is held against; empty for absolute figures
    std::optional<double> goal;  ///< the most that the median may be
    std::vector<double> figures; ///< one a run
    std::string unit = "";       ///< of absolute figures
};

/// Tells a row on standard output. Its texts have no quotation marks.
void printRow(const Row &row);
