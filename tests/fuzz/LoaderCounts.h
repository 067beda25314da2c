#pragma once
// What one loader made of its mutated inputs: how many loaded whole or in
// part, how many were refused with an error (by kind), the slowest input,
// and every violation (an outcome outside the documented ones).
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace fuzz {

struct LoaderCounts {
    std::string loader;
    uint64_t inputs = 0;
    uint64_t loaded = 0;      // loaded (a faulty part skipped, as documented, counts here)
    uint64_t refused = 0;     // ended in an error for the error report
    std::map<std::string, uint64_t> errors;   // refusals by the report's title and code
    double slowestMs = 0;
    uint64_t violations = 0;
    std::vector<std::string> firstViolations;   // at most 10

    void Violation(const std::string& what)
    {
        ++violations;
        if (firstViolations.size() < 10)
            firstViolations.push_back(what);
    }
};

} // namespace fuzz
