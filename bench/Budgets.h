#pragma once

#include <string>
#include <vector>

namespace quill::bench {

enum class Unit { kSeconds, kBytes };

/** One row of the table: what is measured, what bounds it, and how many times the bound it may take. */
struct Budget {
    const char* row;       ///< name of the benchmark, "subject/case"
    double most;           ///< of measured / bound
    Unit unit;             ///< of both sides
    const char* measured;  ///< in words
    const char* bound;     ///< in words
};

/** Every row, in the order they are shown. */
const std::vector<Budget>& budgets();

/** Throws for a row that has none. */
const Budget& budgetOf(const std::string& row);

}  // namespace quill::bench
