#pragma once
// What the tray window needs of the database explorer: built elsewhere and
// handed to CDummyWnd, which keeps it and creates its window on demand.
#include <windows.h>

namespace CL {

class IDatabaseExplorer {
public:
    virtual ~IDatabaseExplorer() = default;
    // The explorer's window; NULL while it is not open.
    virtual HWND Window() const = 0;
    // Whether a connection to the historian database can be opened.
    virtual bool IsDatabaseAccessible() = 0;
    // Creates the window (its result is not judged).
    virtual void Create() = 0;
};

} // namespace CL
