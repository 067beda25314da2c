#pragma once
// What the exchange with the server tells about the address spaces that
// pass through it: the server's address space was loaded from the exchange
// file, and an editor's address space is about to be written there and was
// written (the server told to reload it). The change recorder (versions and
// the change journal) listens; the exchange itself stays the contract with
// the server and nothing else.
#include <string>

class CAddressSpaceDocument;

class IExchangeObserver {
public:
    virtual ~IExchangeObserver() = default;
    virtual void Loaded(const std::wstring& exchangeFile) = 0;
    virtual void Saving(const std::wstring& exchangeFile, const CAddressSpaceDocument& document) = 0;
    virtual void Saved(const std::wstring& exchangeFile, const CAddressSpaceDocument& document) = 0;
};
