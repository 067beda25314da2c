#pragma once
// An address space holding every item data type with the values that
// spreadsheets are known to change: the extremes of each type, integers
// beyond 2^53, floats that need 9 or 17 digits, texts that look like
// numbers, booleans or formulas, blanks at either end, line breaks, escape
// look-alikes, characters outside the basic plane, empty values and arrays.
// Used by the workbook tests and the spreadsheet round trip.
#include "addressspace/OPCServerAddressSpace.h"
#include "common/SmartPtr.h"

#include <string>

CL::CSmartPtr<COPCServerAddressSpace> ValueCorpusSpace();

// "" when both address spaces hold the same branches and items with the
// same names, types, flags, scan rates and values (compared exactly, bit by
// bit for floating values); else the first difference.
std::wstring CompareAddressSpaces(const COPCServerAddressSpace& expected, const COPCServerAddressSpace& actual);
