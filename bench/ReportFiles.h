#pragma once

#include <string>
#include <vector>

#include "Report.h"
#include "Scaling.h"

namespace quill::bench {

/**
 * Writes into the folder `directory`: table.md, the results and the machine for a page; ratios.tsv and scaling.tsv,
 * what the plots show. Throws when a file cannot be written.
 */
void writeReportFiles(const std::string& directory, const std::vector<Result>& results,
                      const std::vector<ScalingPoint>& scaling);

}  // namespace quill::bench
