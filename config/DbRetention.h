#pragma once
// The historian retention values that the database maintenance options
// dialog edits: a copy of six keys of the settings record, handed from the
// options dialog to the small dialog and back.
struct CSettings;

struct CDbRetention {
    bool KeepAll = true;          // DbKeepAllValues
    bool KeepLast = false;        // DbKeepLastValues
    long LastValues = 1000;       // DbLastValues
    bool KeepMinutes = false;     // DbKeepLastMinutesValues
    long LastMinutes = 1440;      // DbLastMinutesValues
    long DeletePercent = 50;      // DbDeletePercent
    // The number edit (control id) whose text was not a number when the
    // small dialog was last closed with OK; 0 when every number was read.
    int BadNumberField = 0;

    static CDbRetention From(const CSettings& settings);
    void StoreInto(CSettings& settings) const;
};
