#pragma once
// CWorkCancelled: thrown out of long work when the user cancels it (Esc or a
// Cancel button seen between two steps). It is no failure: the windows
// catch it before their error report and leave nothing half done.
#include <stdexcept>

namespace CL {

class CWorkCancelled : public std::runtime_error {
public:
    CWorkCancelled() : std::runtime_error("cancelled by the user") {}
};

} // namespace CL
