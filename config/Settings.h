#pragma once
// The process-wide settings record and its file "Morvane.ini.xml": one element
// "Morvane_ini" whose attributes are the keys below, in this order.
#include <windows.h>

#include <string>
#include <utility>
#include <vector>

struct CSettings {
    std::wstring Title = L"Varnel";
    bool CustomADOConnection = false;
    std::wstring ADOConnection;
    bool StartCCM = false;
    std::wstring CCM;
    bool StartEmpty = false;
    GUID HDAServer_CLSID;
    GUID DAServer_CLSID;
    GUID AEServer_CLSID;
    std::wstring ServiceName = L"Morvane";
    bool MapItemsToFiles = false;
    bool EnableXmlDa = true;
    long XmlDaPort = 8082;
    GUID CcmServer_CLSID;
    bool EnableUa = true;
    long UaPort = 8083;
    long TraceLevel = 1;
    bool DbKeepAllValues = true;
    bool DbKeepLastValues = false;
    long DbLastValues = 1000;
    bool DbKeepLastMinutesValues = false;
    long DbLastMinutesValues = 1440;
    long DbDeletePercent = 50;

    CSettings();
    bool operator==(const CSettings&) const = default;
};

namespace CL {
// The product's own server class identifiers (the defaults of the record).
extern const GUID kDefaultHDAServerClsid;
extern const GUID kDefaultDAServerClsid;
extern const GUID kDefaultAEServerClsid;
extern const GUID kDefaultCcmServerClsid;

inline constexpr wchar_t kSettingsFileName[] = L"Morvane.ini.xml";
// The server executable, beside the settings file.
inline constexpr wchar_t kServerExecutableName[] = L"Morvane.exe";
inline constexpr wchar_t kSettingsRootElement[] = L"Morvane_ini";
}

// The record itself: defaults until LoadSettings() runs.
extern CSettings g_Settings;

// Reads "Morvane.ini.xml" of the installation folder into g_Settings. A
// missing or malformed file changes nothing; a missing or unconvertible key
// raises a CL::CException at that key, after the earlier keys were assigned.
void LoadSettings();
// The same, from any path, into any record.
void LoadSettingsFrom(const std::wstring& path, CSettings& settings);

// Writes g_Settings to "Morvane.ini.xml" of the installation folder.
void SaveSettings();
// Writes g_Settings (or the given record) to the full path. The file is
// written beside its target first and then moved over it, so that a failed
// save never leaves a truncated settings file.
void SaveSettingsTo(const std::wstring& path);
void SaveSettingsTo(const std::wstring& path, const CSettings& settings);

// Every key of the record with the text it is written to the file as, in
// the file's order.
std::vector<std::pair<std::wstring, std::wstring>> SettingsAttributeTexts(const CSettings& settings);

// The running executable's folder joined with a file name.
std::wstring GetInstallationFolderPath(const std::wstring& fileName);

// "Morvane.ini.xml.YYYY_MM_DD-hh_mm_ss" for the given UTC time.
std::wstring BackupSettingsFileName(const SYSTEMTIME& utc);
// Writes the record as it stands to a backup file named from the current UTC
// time in the installation folder; returns its full path.
std::wstring BackupSettings();
