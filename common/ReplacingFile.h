#pragma once
// CReplacingFile: a file written beside its target, under a name made
// unique in the target's folder ("<target>.<number>.saving", a file of that
// name is never replaced), and
// moved over the target only by Commit, so that work that fails or is
// cancelled halfway leaves no partial file and the target as it was. Writes
// are buffered. A read-only target is refused when the file is opened, as a
// direct write would be (the replacing move is not refused everywhere).
// Failures throw CException with the given source text.
#include <windows.h>

#include <string>
#include <string_view>

#include "common/Handle.h"

namespace CL {

class CReplacingFile {
public:
    CReplacingFile(const std::wstring& target, const wchar_t* failureSource);
    // Deletes the temporary file unless Commit moved it over the target.
    ~CReplacingFile();
    CReplacingFile(const CReplacingFile&) = delete;
    CReplacingFile& operator=(const CReplacingFile&) = delete;

    void Write(std::string_view bytes);
    // Writes what is buffered, closes the file and moves it over the target.
    void Commit();
    const std::wstring& TemporaryPath() const { return m_temporary; }

    // Creates a new empty file beside the target under a name no file has
    // (path), open for writing; an empty handle (last error set) when none
    // could be made.
    static UniqueFileHandle CreateTemporaryBeside(const std::wstring& target, std::wstring& path);

private:
    void Flush();
    [[noreturn]] void Fail(HRESULT hr) const;

    std::wstring m_target;
    std::wstring m_temporary;
    const wchar_t* m_failureSource;
    UniqueFileHandle m_file;
    std::string m_buffer;
    bool m_committed = false;
};

} // namespace CL
