#include "FuzzTarget.h"

#include <comdef.h>

#include <exception>

#include "common/Exception.h"
#include "common/Text.h"

namespace fuzz {

std::string CaughtKind()
{
    try {
        throw;
    } catch (const CL::CException& e) {
        return CL::FormatA("CException 0x%08X", static_cast<unsigned>(e.Error()));
    } catch (const _com_error& e) {
        return CL::FormatA("_com_error 0x%08X", static_cast<unsigned>(e.Error()));
    } catch (const std::exception& e) {
        return std::string("std::exception ") + e.what();
    } catch (...) {
        return "unknown exception";
    }
}

std::string CaughtText()
{
    try {
        throw;
    } catch (const CL::CException& e) {
        return CaughtKind() + " " + CL::Narrow(e.Text());
    } catch (...) {
        return CaughtKind();
    }
}

} // namespace fuzz
