#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Tessel::Test {

/// A program that serves the test: it says on one line of output that it is ready, and ends when
/// its standard input does, which is with this object or with the process, even when that is
/// killed.
class KeptProgram {
public:
    /// Starts it and waits for its line. `words` are the program's path and its arguments.
    explicit KeptProgram(std::vector<std::string> words);
    ~KeptProgram();
    KeptProgram(const KeptProgram&) = delete;
    KeptProgram& operator=(const KeptProgram&) = delete;

    /// What it said; empty when it did not start.
    const std::string& line() const { return line_; }

private:
    pid_t process_ = -1;
    int lifeline_ = -1;
    std::string line_;
};

} // namespace Tessel::Test
