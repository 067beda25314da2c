#pragma once
// The address space loader under mutation, by each way the program reads a
// file: the editor's Reload of the exchange file (the document keeps its
// model when the load fails), the load from a stopped server, and Open (a
// new model loaded from the file). A file either loads (faulty branches and
// items skipped) into a model that saves and loads again, or is refused with
// E_FAIL or E_POINTER; a refused load leaves the document's model as it was.
#include <memory>
#include <string>

#include "FuzzTarget.h"
#include "TextMutator.h"
#include "addressspace/AddressSpaceDocument.h"
#include "addressspace/AddressSpaceExchange.h"
#include "support/FakeServiceManager.h"

namespace fuzz {

class CAddressSpaceFuzz final : public IFuzzTarget {
public:
    explicit CAddressSpaceFuzz(const std::wstring& folder);
    ~CAddressSpaceFuzz() override;

    const char* Name() const override { return "address space XML"; }
    const std::string& CurrentInput() const override { return m_input; }
    void RunOne(CFuzzRandom& random, LoaderCounts& counts) override;

    // The well-formed documents the mutations start from.
    static std::string SampleDocument();

private:
    enum class Way { Reload, FromServer, Open };
    void Load(Way way, LoaderCounts& counts);
    void CheckRoundTrip(const COPCServerAddressSpace& space, LoaderCounts& counts);

    std::wstring m_file;
    std::wstring m_copy;
    std::string m_input;
    std::string m_bases[2];
    CTextMutator m_mutator;
    test::FakeServiceManager m_manager;   // the server's service does not exist
    std::unique_ptr<test::ScopedServiceManager> m_scoped;
    CAddressSpaceExchange m_exchange;
    CAddressSpaceDocument m_document;
    uint64_t m_runs = 0;
};

// A description of the model's content (names, types, values, conditions),
// equal for equal models.
std::string Fingerprint(const COPCServerAddressSpace& space);

} // namespace fuzz
