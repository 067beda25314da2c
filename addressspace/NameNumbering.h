#pragma once
// Names made unique on a level by a number: a pasted "Speed" where one
// exists becomes "Speed_2" (then "Speed_3" ...), and duplicates of "Motor7"
// count on as "Motor8", "Motor9" ... (a name without a trailing number gets
// "_1", "_2" ...). Names already taken are skipped; letter case is ignored,
// as the model compares names.
#include <functional>
#include <string>
#include <vector>

class CNameNumbering {
public:
    using Taken = std::function<bool(const std::wstring&)>;

    // The name itself when it is free, else the first free "name_N" from
    // N = 2 ("Speed_2" counts on from 2 to "Speed_3").
    static std::wstring NextFree(const std::wstring& name, const Taken& taken);

    // `count` free names counting on from the name's trailing number (its
    // leading zeros kept: "Pump007" -> "Pump008"), or "_1", "_2" ... when it
    // has none.
    static std::vector<std::wstring> CountOn(const std::wstring& name, size_t count, const Taken& taken);
};
