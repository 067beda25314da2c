#include "SettingsFileXml.h"

#include <gtest/gtest.h>

namespace test {

namespace {

struct KeyDefault {
    const char* key;
    const char* value;
};

// Every key with its default as the file holds it, in file order.
const KeyDefault kDefaults[] = {
    {"Title", "Varnel"},
    {"CustomADOConnection", "0"},
    {"ADOConnection", ""},
    {"StartCCM", "0"},
    {"CCM", ""},
    {"StartEmpty", "0"},
    {"HDAServer_CLSID", "{6E2D1A40-3B7C-4F8E-9A51-0C4D2B7E8A01}"},
    {"DAServer_CLSID", "{6E2D1A41-3B7C-4F8E-9A51-0C4D2B7E8A01}"},
    {"AEServer_CLSID", "{6E2D1A42-3B7C-4F8E-9A51-0C4D2B7E8A01}"},
    {"ServiceName", "Morvane"},
    {"MapItemsToFiles", "0"},
    {"EnableXmlDa", "-1"},
    {"XmlDaPort", "8082"},
    {"CcmServer_CLSID", "{6E2D1A43-3B7C-4F8E-9A51-0C4D2B7E8A01}"},
    {"EnableUa", "-1"},
    {"UaPort", "8083"},
    {"TraceLevel", "1"},
    {"DbKeepAllValues", "-1"},
    {"DbKeepLastValues", "0"},
    {"DbLastValues", "1000"},
    {"DbKeepLastMinutesValues", "0"},
    {"DbLastMinutesValues", "1440"},
    {"DbDeletePercent", "50"},
};

} // namespace

const std::vector<std::string>& SettingsFileKeys()
{
    static const std::vector<std::string> keys = [] {
        std::vector<std::string> names;
        for (const KeyDefault& entry : kDefaults)
            names.emplace_back(entry.key);
        return names;
    }();
    return keys;
}

std::string SettingsFileXml(const std::vector<std::pair<std::string, std::string>>& values)
{
    for (const auto& [key, value] : values) {
        bool known = false;
        for (const KeyDefault& entry : kDefaults)
            known = known || key == entry.key;
        EXPECT_TRUE(known) << key << " is not a settings key";
    }
    std::string xml = "<Morvane_ini";
    for (const KeyDefault& entry : kDefaults) {
        std::string value = entry.value;
        for (const auto& [key, given] : values)
            if (key == entry.key)
                value = given;
        xml += std::string(" ") + entry.key + "=\"" + value + "\"";
    }
    return xml + "/>";
}

} // namespace test
