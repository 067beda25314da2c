#include "AddressSpaceFuzz.h"

#include <chrono>

#include "addressspace/OPCItem.h"
#include "addressspace/OPCServerAddressSpace.h"
#include "common/Text.h"
#include "support/TestSupport.h"

namespace fuzz {

namespace {

const std::vector<std::string> kXmlTokens = {
    "<Branch Name=\"b\">", "</Branch>", "<Item Name=\"i\" CanonicalDataType=\"8195\"><Value>1\r\n2</Value></Item>",
    "<Value>", "</Value>", "<OPCAECondition source=\"s\" conditionName=\"c\"/>", "<![CDATA[x]]>", "<!--c-->",
    "<?xml version=\"1.0\" encoding=\"UTF-16\"?>", "<!DOCTYPE a [<!ENTITY e \"&e;&e;\">]>", "&e;", "Name=\"\"",
    "xmlns=\"urn:x\"", "<Morvane_OPCDAAddressSpace>", "</Morvane_OPCDAAddressSpace>", "\r\n", "\t", "&#10;"};

void Describe(const COPCServerAddressSpaceBranch& branch, std::string& out)
{
    out += "B" + CL::ToUtf8(branch.Name()) + "{";
    for (const auto& item : branch.Items())
        out += "I" + CL::ToUtf8(item->Name()) + "/" + std::to_string(item->CanonicalDataType()) + ";";
    for (const auto& child : branch.Branches())
        Describe(*child, out);
    out += "}";
}

} // namespace

std::string Fingerprint(const COPCServerAddressSpace& space)
{
    std::string out;
    Describe(*space.RootBranch(), out);
    out += "C" + std::to_string(space.Conditions().size());
    return out;
}

std::string CAddressSpaceFuzz::SampleDocument()
{
    const std::string item = " Quality=\"192\" Writable=\"-1\" Readable=\"-1\" ScanRate=\"1000\" Archive=\"0\" "
                             "ValueTime=\"133500000000000000\"";
    return "<Morvane_OPCDAAddressSpace Name=\"\">"
           "<Branch Name=\"Plant\"><Branch Name=\"Line1\">"
           "<Item Name=\"Speed\" CanonicalDataType=\"5\"" + item + "><Value>12.5</Value></Item>"
           "<Item Name=\"Count\" CanonicalDataType=\"3\"" + item + "><Value>7</Value></Item>"
           "<Item Name=\"Label\" CanonicalDataType=\"8\"" + item + "><Value>Tank \"A\"</Value></Item>"
           "<Item Name=\"Setpoints\" CanonicalDataType=\"8197\"" + item + "><Value>1.5&#13;&#10;2.5</Value></Item>"
           "<Item Name=\"Names\" CanonicalDataType=\"8200\"" + item + "><Value>a&#13;&#10;b</Value></Item>"
           "<Item Name=\"Flag\" CanonicalDataType=\"11\"" + item + "><Value>True</Value></Item>"
           "<Item Name=\"Big\" CanonicalDataType=\"20\"" + item + "><Value>-9223372036854775808</Value></Item>"
           "<Item Name=\"Money\" CanonicalDataType=\"6\"" + item + "><Value>12.3456</Value></Item>"
           "<Item Name=\"Empty\" CanonicalDataType=\"18\"" + item + "/>"
           "</Branch><Branch Name=\"Hall.North\"/></Branch>"
           "<Item Name=\"Top\" CanonicalDataType=\"2\"" + item + "><Value>-5</Value></Item>"
           "<OPCAECondition source=\"Plant.Line1.Speed\" conditionName=\"HiHi\" category=\"1\" active=\"-1\" "
           "enabled=\"-1\" acked=\"0\" definition=\"x\" severity=\"500\" description=\"d\" quality=\"192\" "
           "lastAckTime=\"45000.5\" lastActive=\"45000.25\" lastInactive=\"0\" acknowledgerId=\"op\" comment=\"c\"/>"
           "</Morvane_OPCDAAddressSpace>";
}

CAddressSpaceFuzz::CAddressSpaceFuzz(const std::wstring& folder)
    : m_file(folder + kExchangeFileName), m_copy(folder + L"roundtrip.xml"), m_mutator(kXmlTokens),
      m_exchange([] { return std::wstring(L"MvFuzzNoSuchService"); }, m_file)
{
    m_scoped = std::make_unique<test::ScopedServiceManager>(m_manager);
    m_bases[0] = SampleDocument();
    // The second base is what the program itself writes for the first.
    test::WriteFileBytes(m_file, m_bases[0]);
    auto model = CAddressSpaceDocument::ModelPtr::Make();
    model->Load(m_file);
    model->Save(m_copy);
    m_bases[1] = test::ReadFileBytes(m_copy);
    m_document.SetModel(model);
}

CAddressSpaceFuzz::~CAddressSpaceFuzz() = default;

void CAddressSpaceFuzz::RunOne(CFuzzRandom& random, LoaderCounts& counts)
{
    m_input = m_mutator.Mutate(m_bases[random.Below(2)], random);
    test::WriteFileBytes(m_file, m_input);
    const Way way = static_cast<Way>(m_runs++ % 3);
    if (m_runs % 1024 == 0)
        m_manager.calls.clear();
    Load(way, counts);
}

void CAddressSpaceFuzz::Load(Way way, LoaderCounts& counts)
{
    const COPCServerAddressSpace* before = m_document.Model().get();
    const std::string beforePrint = way == Way::Open ? std::string() : Fingerprint(*before);
    CAddressSpaceDocument::ModelPtr opened;
    try {
        switch (way) {
        case Way::Reload: m_exchange.ReloadFromFile(m_document); break;
        case Way::FromServer:
            if (!m_exchange.LoadFromServer(m_document))
                counts.Violation("LoadFromServer gave up on a stopped server");
            break;
        case Way::Open:
            opened = CAddressSpaceDocument::ModelPtr::Make();
            opened->Load(m_file);
            break;
        }
    } catch (...) {
        const std::string kind = CaughtKind();
        ++counts.refused;
        ++counts.errors[kind];
        if (kind != "CException 0x80004005" && kind != "CException 0x80004003")
            counts.Violation("refused with " + kind);
        if (way != Way::Open &&
            (m_document.Model().get() != before || Fingerprint(*m_document.Model()) != beforePrint))
            counts.Violation("a refused load changed the document's model");
        return;
    }
    ++counts.loaded;
    const COPCServerAddressSpace& loaded = way == Way::Open ? *opened : *m_document.Model();
    if (loaded.State() != COPCServerAddressSpace::kStateLoaded)
        counts.Violation("a load ended in state " + std::to_string(loaded.State()));
    if (m_runs % 8 == 0)
        CheckRoundTrip(loaded, counts);
}

// What was loaded (in part) saves, and the saved file loads to the same model.
void CAddressSpaceFuzz::CheckRoundTrip(const COPCServerAddressSpace& space, LoaderCounts& counts)
{
    try {
        space.Save(m_copy);
        auto again = CAddressSpaceDocument::ModelPtr::Make();
        again->Load(m_copy);
        if (Fingerprint(*again) != Fingerprint(space))
            counts.Violation("a loaded model saved and loaded again differs");
    } catch (...) {
        counts.Violation("a loaded model does not save and load again: " + CaughtKind());
    }
}

} // namespace fuzz
