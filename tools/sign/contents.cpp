#include "contents.h"

#include "refusal.h"
#include "texts.h"

#include <qpdf/Pipeline.hh>

#include <memory>
#include <string>
#include <vector>

namespace sign {

namespace {

// Books of 1,000 pages have half of that.
constexpr std::size_t mostBytes = 64'000'000;
constexpr std::size_t mostObjects = 4'000'000;

Refusal tooMuch()
{
    return {trText("Sign", "the pages have too much on them to be searched")};
}

Refusal damaged()
{
    return {trText("Sign", "the document is damaged: what is on its pages cannot be read")};
}

class Collector : public Pipeline
{
public:
    Collector(std::string& data, std::size_t& bytes)
        : Pipeline("contents", nullptr), m_data(data), m_bytes(bytes)
    {
    }

    void write(const unsigned char* part, std::size_t size) override
    {
        m_bytes += size;
        if (m_bytes > mostBytes)
            throw tooMuch();
        m_data.append(reinterpret_cast<const char*>(part), size);
    }
    void finish() override {}

private:
    std::string& m_data;
    std::size_t& m_bytes; // of all that was read
};

} // namespace

void Contents::parse(const QPDFObjectHandle& streams, QPDFObjectHandle::ParserCallbacks& callbacks)
{
    QPDFObjectHandle given = streams;
    std::string data;
    Collector collector(data, m_bytes);
    for (QPDFObjectHandle stream : given.isArray() ? given.getArrayAsVector() : std::vector{given}) {
        if (!stream.isStream())
            continue;
        bool isAttempted = false;
        if (!stream.pipeStreamData(&collector, &isAttempted, 0, qpdf_dl_specialized))
            throw damaged();
        data += '\n';
    }
    const std::shared_ptr<QPDF> other = QPDF::create();
    other->emptyPDF();
    other->setSuppressWarnings(true);
    QPDFObjectHandle::parseContentStream(QPDFObjectHandle::newStream(other.get(), data), &callbacks);
    if (!other->getWarnings().empty())
        throw damaged();
}

void Contents::countObject()
{
    if (++m_objects > mostObjects)
        throw tooMuch();
}

} // namespace sign
