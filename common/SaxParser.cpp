#include "common/SaxParser.h"

#include <atomic>
#include <exception>

#include <initguid.h>

#include "common/ComPtr.h"
#include "common/Exception.h"
#include "common/Text.h"
#include "common/Variant.h"

// MinGW's msxml2.h declares these identifiers without defining them.
DEFINE_GUID(CLSID_SAXXMLReader30, 0x3124c396, 0xfb13, 0x4836, 0xa6, 0xad, 0x13, 0x17, 0xf1, 0x71, 0x36, 0x88);
DEFINE_GUID(IID_ISAXXMLReader, 0xa4f96ed0, 0xf829, 0x476e, 0x81, 0xc0, 0xcd, 0xc7, 0xbd, 0x2a, 0x08, 0x02);
DEFINE_GUID(IID_ISAXContentHandler, 0x1545cdfa, 0x9e4e, 0x4497, 0xa8, 0xa4, 0x2b, 0xf7, 0xd0, 0x11, 0x2c, 0x44);
DEFINE_GUID(IID_ISAXErrorHandler, 0xa60511c4, 0xccf5, 0x479e, 0x98, 0xa3, 0xdc, 0x8d, 0xc5, 0x45, 0xb7, 0xd0);

namespace CL {

namespace {

// The content and error handler handed to the reader: forwards to the
// program's handler and keeps the first exception or error it met.
class SaxBridge final : public ISAXContentHandler, public ISAXErrorHandler {
public:
    explicit SaxBridge(ISaxHandler& handler) : m_handler(handler) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override
    {
        if (!out)
            return E_POINTER;
        if (iid == IID_IUnknown || iid == IID_ISAXContentHandler)
            *out = static_cast<ISAXContentHandler*>(this);
        else if (iid == IID_ISAXErrorHandler)
            *out = static_cast<ISAXErrorHandler*>(this);
        else {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    // Lives on the parsing function's stack: the reader's references do not own it.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE putDocumentLocator(ISAXLocator* locator) override
    {
        m_locator = locator;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE startDocument() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE endDocument() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE startPrefixMapping(const wchar_t*, int, const wchar_t*, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE endPrefixMapping(const wchar_t*, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE startElement(const wchar_t*, int, const wchar_t* local, int localLength,
                                           const wchar_t*, int, ISAXAttributes* attributes) override
    {
        return Guarded([&] { m_handler.StartElement(std::wstring_view(local, Length(localLength)), attributes); });
    }
    HRESULT STDMETHODCALLTYPE endElement(const wchar_t*, int, const wchar_t* local, int localLength, const wchar_t*,
                                         int) override
    {
        return Guarded([&] { m_handler.EndElement(std::wstring_view(local, Length(localLength))); });
    }
    HRESULT STDMETHODCALLTYPE characters(const wchar_t* text, int length) override
    {
        return Guarded([&] { m_handler.Characters(std::wstring_view(text, Length(length))); });
    }
    HRESULT STDMETHODCALLTYPE ignorableWhitespace(const wchar_t* text, int length) override
    {
        return characters(text, length);
    }
    HRESULT STDMETHODCALLTYPE processingInstruction(const wchar_t*, int, const wchar_t*, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE skippedEntity(const wchar_t*, int) override { return S_OK; }

    HRESULT STDMETHODCALLTYPE error(ISAXLocator* locator, const wchar_t* message, HRESULT code) override
    {
        Remember(locator, message, code);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE fatalError(ISAXLocator* locator, const wchar_t* message, HRESULT code) override
    {
        Remember(locator, message, code);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ignorableWarning(ISAXLocator*, const wchar_t*, HRESULT) override { return S_OK; }

    std::exception_ptr failure;
    std::wstring message;
    int line = 0;

private:
    static size_t Length(int length) { return length > 0 ? static_cast<size_t>(length) : 0; }

    template <typename F>
    HRESULT Guarded(F&& work)
    {
        if (failure)
            return E_ABORT;
        try {
            work();
            return S_OK;
        } catch (...) {
            failure = std::current_exception();
            return E_ABORT;
        }
    }

    void Remember(ISAXLocator* locator, const wchar_t* text, HRESULT)
    {
        if (!message.empty())
            return;
        message = text ? TrimWhiteSpace(text) : std::wstring();
        if (message.empty())
            message = L"not well-formed";
        if (locator)
            locator->getLineNumber(&line);
    }

    ISaxHandler& m_handler;
    ISAXLocator* m_locator = nullptr;
};

} // namespace

std::wstring_view SaxAttribute(ISAXAttributes* attributes, std::wstring_view name, bool* found)
{
    if (found)
        *found = false;
    int count = 0;
    if (!attributes || FAILED(attributes->getLength(&count)))
        return {};
    for (int i = 0; i < count; ++i) {
        const wchar_t* local = nullptr;
        int localLength = 0;
        if (FAILED(attributes->getLocalName(i, &local, &localLength)) || !local)
            continue;
        if (std::wstring_view(local, static_cast<size_t>(localLength)) != name)
            continue;
        const wchar_t* value = nullptr;
        int valueLength = 0;
        if (FAILED(attributes->getValue(i, &value, &valueLength)) || !value)
            return {};
        if (found)
            *found = true;
        return std::wstring_view(value, static_cast<size_t>(valueLength));
    }
    return {};
}

void ParseXml(IStream* stream, ISaxHandler& handler, const std::wstring& partName)
{
    ComPtr<ISAXXMLReader> reader;
    HRESULT hr = ::CoCreateInstance(CLSID_SAXXMLReader30, nullptr, CLSCTX_INPROC_SERVER, IID_ISAXXMLReader,
                                    reinterpret_cast<void**>(reader.ReleaseAndGetAddressOf()));
    if (FAILED(hr))
        throw CException(hr, L"CoCreateInstance (CLSID_SAXXMLReader30)");
    SaxBridge bridge(handler);
    reader->putContentHandler(&bridge);
    reader->putErrorHandler(&bridge);
    VARIANT input;
    ::VariantInit(&input);
    input.vt = VT_UNKNOWN;
    input.punkVal = stream;
    hr = reader->parse(input);
    reader->putContentHandler(nullptr);
    reader->putErrorHandler(nullptr);
    if (bridge.failure)
        std::rethrow_exception(bridge.failure);
    if (FAILED(hr)) {
        std::wstring text = Format(L"The part \"%ls\" of the workbook is not well-formed XML", partName.c_str());
        if (bridge.line > 0)
            text += Format(L" (line %d)", bridge.line);
        if (!bridge.message.empty())
            text += L": " + bridge.message;
        throw CException(hr, text + L".");
    }
}

} // namespace CL
