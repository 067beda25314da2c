// Deleting a key that other processes or threads write and delete at the
// same moment: the key another deleter removed first is gone as asked,
// which the registry reports as ERROR_KEY_DELETED in the middle of the walk.
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <string>
#include <thread>

#include "common/Exception.h"
#include "common/RegistryKey.h"
#include "common/Text.h"

TEST(RegistryKey, DeletingAKeyThatOthersDeleteAtTheSameTimeSucceeds)
{
    const std::wstring path = L"Software\\MorvaneTests\\DeleteRace" + std::to_wstring(::GetCurrentProcessId());
    std::atomic<bool> stop{false};
    // Another writer and another deleter of the same key.
    std::thread writer([&] {
        while (!stop) {
            HKEY key = nullptr;
            if (::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                                  nullptr) != ERROR_SUCCESS)
                continue;
            for (int i = 0; i < 6; ++i)
                ::RegSetValueExW(key, std::to_wstring(i).c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&i),
                                 sizeof i);
            ::RegCloseKey(key);
        }
    });
    std::thread deleter([&] {
        while (!stop)
            ::RegDeleteTreeW(HKEY_CURRENT_USER, path.c_str());
    });
    std::string failure;
    const DWORD end = ::GetTickCount() + 1500;
    int deletes = 0;
    while (::GetTickCount() < end && failure.empty()) {
        try {
            CL::CRegistryKey::Delete(HKEY_CURRENT_USER, path);
            ++deletes;
        } catch (const CL::CException& e) {
            failure = CL::Narrow(e.Text());
        }
    }
    stop = true;
    writer.join();
    deleter.join();
    CL::CRegistryKey::Delete(HKEY_CURRENT_USER, path);
    EXPECT_EQ(failure, "") << "after " << deletes << " deletes";
    EXPECT_GT(deletes, 100);
}
