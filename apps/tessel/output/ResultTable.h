#pragma once

#include "apps/tessel/output/Output.h"

#include <string>
#include <vector>

namespace Tessel::App {

/// Rows whose columns stand below each other; with --json an object for each row.
class ResultTable {
public:
    using Cells = std::vector<std::string>;

    ResultTable(const Output& output, Cells headings);

    void add(Cells cells, const Json& object);
    /// Writes all rows, or nothing but `emptyLine` where there are none.
    void print(const std::string& emptyLine = "") const;

private:
    const Output& output_;
    std::vector<Cells> rows_; ///< the first are the headings
};

} // namespace Tessel::App
