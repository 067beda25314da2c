#pragma once
// The text of a settings file (Morvane.ini.xml) for tests that write one by
// hand: one Morvane_ini element with every key in the order the program
// writes them.
#include <string>
#include <utility>
#include <vector>

namespace test {

// The keys of the settings file in the order the program writes them.
const std::vector<std::string>& SettingsFileKeys();

// Every key with the program's default value as the file holds it, except
// the keys given, whose values are raw attribute text (entities allowed).
// A key that is not a settings key is a test failure.
std::string SettingsFileXml(const std::vector<std::pair<std::string, std::string>>& values = {});

} // namespace test
