#pragma once
// The exchange of the address space with the running server: one XML file,
// "DefaultAddressSpace.xml" in the installation folder, and two user control
// codes of the server's service. On code 129 the server writes its live
// address space into the file; on code 128 it reloads it from the file.
// Everything runs on the calling (user interface) thread; failures throw and
// leave the document as it was.
#include <windows.h>

#include <functional>
#include <memory>
#include <string>

#include "addressspace/AddressSpaceDocument.h"
#include "addressspace/ExchangeObserver.h"

inline constexpr wchar_t kExchangeFileName[] = L"DefaultAddressSpace.xml";

class CAddressSpaceExchange {
public:
    static constexpr DWORD kPollInterval = 100;   // ms between two looks at the file
    static constexpr int kPollCount = 100;        // looks before giving up (about 10 s)

    // The name of the server's service, asked at each call (a change of the
    // settings may rename the service while the program runs).
    using ServiceNameSource = std::function<std::wstring()>;

    // The owner (the application shell) says which service and which file:
    // this subsystem does not read the settings itself.
    CAddressSpaceExchange(ServiceNameSource serviceName, std::wstring exchangeFile);

    // The exchange file of an installation folder (ending with a backslash).
    static std::wstring ExchangeFilePath(const std::wstring& installationFolder);
    const std::wstring& ExchangeFile() const noexcept { return m_exchangeFile; }
    // How many looks at the file the last wait for the server took (0 when
    // the last load did not wait).
    int PollsOfLastWait() const noexcept { return m_polls; }
    // Told of every load and save (versions and the change journal); none
    // by default.
    void SetObserver(std::shared_ptr<IExchangeObserver> observer) { m_observer = std::move(observer); }
    IExchangeObserver* Observer() const noexcept { return m_observer.get(); }

    // Fills the document with the server's current address space: a running
    // server is asked to write it (code 129) and the file's last-write time
    // is watched; a stopped server's file is taken as it stands. When the
    // server does not answer in time the user is asked whether to load the
    // file as it was saved before; any answer but Yes returns false and
    // leaves the document untouched. Clears the dirty flag on success.
    bool LoadFromServer(CAddressSpaceDocument& document);

    // The server's address space now, as a new address space, for a
    // compare: a running server is asked to write it (code 129) and the
    // file is watched as LoadFromServer does; a stopped server's file is
    // taken as it stands. No document and no dirty flag is touched. When
    // the server does not answer in time the same question is asked; any
    // answer but Yes gives null.
    CAddressSpaceDocument::ModelPtr FetchFromServer();

    // Replaces the document's address space with the exchange file's content
    // without asking the server; empties and refills the attached views.
    void ReloadFromFile(CAddressSpaceDocument& document);

    // Writes the document's address space to the exchange file and, when the
    // service runs, tells the server to reload it (code 128). Clears the
    // dirty flag.
    void SaveToServer(CAddressSpaceDocument& document);

private:
    // The file's last-write time; throws when the file cannot be read.
    ULONGLONG LastWriteTime() const;
    // Polls the last-write time until it differs from `before`; false when
    // it never did.
    bool WaitForNewFile(ULONGLONG before) const;
    // The "Load" question; true for Yes.
    static bool AskToLoadSavedFile();
    // A new address space loaded from the exchange file.
    CAddressSpaceDocument::ModelPtr LoadExchangeFile() const;

    // Whether the server's service runs now.
    bool ServerRunning() const;

    ServiceNameSource m_serviceName;
    std::wstring m_exchangeFile;
    mutable int m_polls = 0;
    std::shared_ptr<IExchangeObserver> m_observer;
};
