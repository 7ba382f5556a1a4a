#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Measuring.h"

namespace quill::bench {

/** What figures in seconds or bytes are shown in. */
struct Unit {
    double one;
    const char* name;
};

/** One row of the table: what is measured, what bounds it, and how many times the bound it may take. */
struct Row {
    std::string name;     ///< "subject/case"
    double most;          ///< of measured / bound
    Unit unit;            ///< of both sides
    const char* what;     ///< is measured
    const char* against;  ///< the bound
    std::function<Figures()> measure;
};

/** Every row, in the order they are shown. */
std::vector<Row> makeRows();

}  // namespace quill::bench
