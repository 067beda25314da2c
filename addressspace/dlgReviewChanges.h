#pragma once
// CdlgReviewChanges: the "Review Changes" window. It lists every difference
// between two address spaces (kind, where it changed on, path, field, before,
// after, and what it does to the values the historian archived), sortable by
// a header click, filtered by a Find pattern, copied with Ctrl+C as
// tab-separated text with a header and exported as CSV.
//
// Two ways to open it:
//
// - Over the editor (the constructor with the document): the editor's
//   address space is the "after" side, and the window chooses the "before"
//   side among
//     "My changes since the last load or save"  (the document's baseline),
//     "The server now"          (asked with code 129; ReviewServices::serverNow),
//     a file                    ("Compare with File...": XML, CSV, ...),
//     a given address space     (CompareEditorWith: e.g. a kept version).
//   Selected rows can be reverted in the editor as one undoable step (the
//   editor's objects made as they are on the "before" side), and Save runs
//   the editor's Save (its question included).
//
// - Read-only (the constructor with two address spaces): any "before"
//   against any "after" (two version files, a version and the server now);
//   no revert, no save, no choice of source.
//
// For the server source, each row also says whether the editor or the
// server changed it since the editor loaded the address space; an object
// changed on both sides is a conflict (Save overrides the server's change).
//
// The window is modal (DoModal); tests may create it modeless (Create).
#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "addressspace/AddressSpaceDocument.h"
#include "addressspace/ReviewRows.h"
#include "common/Window.h"
#include "common/historian/HistorianValues.h"
#include "common/ui/DialogAnchors.h"
#include "common/ui/ReportList.h"

class CEditCommand;

// What the window asks of its owner. Every member may be empty.
struct ReviewServices {
    using ModelPtr = CAddressSpaceDocument::ModelPtr;
    // The server's address space now (null when the user gave up);
    // empty: the window offers no "The server now".
    std::function<ModelPtr()> serverNow;
    // The historian's summary (one query) of the given item IDs and of every
    // ID below the given branch paths; a throw or an empty function means
    // the historian cannot be opened: the impact column says so.
    std::function<std::vector<CL::CHistorianSummaryEntry>(const std::vector<std::wstring>& itemIds,
                                                          const std::vector<std::wstring>& branchPaths)>
        historianSummary;
    // Runs the editor's Save (with its question); empty: no Save button.
    std::function<void()> save;
    // Called after a revert went into the document's history, so that the
    // editor brings its views up to the model.
    std::function<void(CEditCommand&)> edited;
    // The editor's last Find text, the filter the window starts with.
    std::wstring filter;
};

class CdlgReviewChanges : public CL::CDialog {
public:
    using ModelPtr = CAddressSpaceDocument::ModelPtr;

    enum class Source { MyChanges, ServerNow, File, Given, Fixed };

    static constexpr wchar_t kTitle[] = L"Review Changes";
    static constexpr wchar_t kMyChanges[] = L"My changes since the last load or save";
    static constexpr wchar_t kServerNow[] = L"The server now";
    static constexpr wchar_t kNoHistorian[] = L"Historian not accessible";

    // Over the editor: the document's address space against its baseline
    // (until another source is chosen).
    CdlgReviewChanges(CAddressSpaceDocument& document, ReviewServices services);
    // Read-only: `before` against `after`, each named by its label.
    CdlgReviewChanges(ModelPtr before, std::wstring beforeLabel, ModelPtr after, std::wstring afterLabel,
                      ReviewServices services);

    // Before opening, over the editor: start with the server now, with a
    // file, or with a given address space named by the label.
    void StartWithServer() { m_source = Source::ServerNow; }
    void StartWithFile(std::wstring path);
    void CompareEditorWith(ModelPtr before, std::wstring label);

    INT_PTR DoModal(HWND owner);
    HWND Create(HWND owner);

    // Switches the "before" side (over the editor only); false when the
    // source could not be had (the server gave no answer, the file failed:
    // the error is shown and the previous source stays).
    bool ShowSource(Source source);
    bool ShowFile(const std::wstring& path);

    // For tests and the frame.
    Source CurrentSource() const noexcept { return m_source; }
    HWND List() const { return m_list.Hwnd(); }
    CL::CReportList& ReportList() { return m_list; }
    const CReviewRows& Rows() const noexcept { return m_rows; }
    bool HistorianOpened() const noexcept { return m_historianOpened; }
    // Reverts the differences of these shown rows in the editor as one
    // undoable step; returns how many were taken back.
    size_t RevertRows(const std::vector<size_t>& rows);
    // The selected rows (all shown rows when none is selected) as
    // tab-separated text with the column titles first.
    std::wstring SelectionText() const;
    // Every shown row as CSV (UTF-8 with a byte order mark).
    std::string CsvText() const;
    // The summary line and the historian line under the list.
    std::wstring SummaryText() const;
    std::wstring ImpactText() const { return m_impactText; }

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnDpiChanged() override { m_list.OnDpiChanged(); }

private:
    bool Editing() const noexcept { return m_document != nullptr; }
    // Compares the current "before" with the "after" and fills the list.
    void Recompute();
    // Reads the historian's summary of what the differences concern (not
    // again once the historian could not be opened).
    void LoadHistorian(const AddressSpaceDifferences& differences);
    void FillSourceCombo();
    void OnSourceChosen();
    void OnCompareWithFile();
    void OnRevert();
    void OnCopy();
    void OnExport();
    void OnSave();
    void UpdateButtons();
    void ShowTexts();
    ModelPtr After() const;

    CAddressSpaceDocument* m_document = nullptr;
    ReviewServices m_services;
    Source m_source = Source::MyChanges;
    ModelPtr m_before;              // the "before" side shown now
    std::wstring m_beforeLabel;
    ModelPtr m_after;               // read-only mode only
    std::wstring m_afterLabel;
    ModelPtr m_given;               // CompareEditorWith
    std::wstring m_givenLabel;
    std::wstring m_filePath;        // the file compared, once one was chosen
    ModelPtr m_file;

    bool m_historianFailed = false;
    bool m_historianOpened = false;
    std::vector<CL::CHistorianSummaryEntry> m_summary;

    CReviewRows m_rows;
    std::wstring m_impactText;
    CompareSummary m_counts;
    CL::CReportList m_list;
    CL::CDialogAnchors m_anchors;
    wchar_t m_openPath[261] = {};
    bool m_filling = false;
};
