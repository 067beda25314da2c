#pragma once
// One loader of the program under mutation: it makes the next mutated input
// from the random stream, hands it to the program's own loading code and
// judges the outcome into the counts.
#include <string>

#include "FuzzRandom.h"
#include "LoaderCounts.h"

namespace fuzz {

class IFuzzTarget {
public:
    virtual ~IFuzzTarget() = default;
    virtual const char* Name() const = 0;
    // The input under test now (kept for the report of a crash or a hang).
    virtual const std::string& CurrentInput() const = 0;
    virtual void RunOne(CFuzzRandom& random, LoaderCounts& counts) = 0;
};

// The kind of the exception being handled, as the error report titles it,
// with the code ("CException 0x80004005"); from inside a catch clause.
std::string CaughtKind();
// The same with the exception's own text, for a violation.
std::string CaughtText();

} // namespace fuzz
