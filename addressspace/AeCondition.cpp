#include "addressspace/AeCondition.h"

#include <cwchar>

bool AeCondition::SameConditionAs(const AeCondition& other) const
{
    return _wcsicmp(source.c_str(), other.source.c_str()) == 0 &&
           _wcsicmp(conditionName.c_str(), other.conditionName.c_str()) == 0;
}
