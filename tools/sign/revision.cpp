#include "revision.h"

#include "crypto.h"
#include "refusal.h"
#include "texts.h"

#include <openssl/rand.h>

#include <algorithm>
#include <cctype>
#include <charconv>

namespace sign {

namespace {

// Of those that are common to readers.
constexpr int largestNumber = 8'388'607;
// Where readers look for the end of a document.
constexpr std::size_t tailSize = 1054;
// A file offset as cross-reference tables have it.
constexpr std::size_t offsetDigits = 10;
constexpr std::size_t largestOffset = 9'999'999'999;

std::string digits(std::size_t number, std::size_t count)
{
    const std::string text = std::to_string(number);
    return std::string(count - std::min(count, text.size()), '0') + text;
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\0';
}

std::size_t afterBlanks(std::string_view bytes, std::size_t position)
{
    while (position < bytes.size() && isBlank(bytes[position]))
        ++position;
    return position;
}

std::size_t lastCrossReference(std::string_view bytes)
{
    constexpr std::string_view word = "startxref";
    const std::string_view tail = bytes.substr(bytes.size() - std::min(bytes.size(), tailSize));
    const std::size_t found = tail.rfind(word);
    std::size_t offset = 0;
    if (found != std::string_view::npos) {
        const std::string_view rest = tail.substr(found + word.size());
        const std::string_view number = rest.substr(afterBlanks(rest, 0));
        const auto [end, fault] = std::from_chars(number.data(), number.data() + number.size(), offset);
        // Some readers would look for another one where these are not words of their own.
        if (fault != std::errc() || number.size() == rest.size() ||
            (end != number.data() + number.size() && !isBlank(*end)))
            offset = 0;
    }
    if (offset == 0 || offset >= bytes.size())
        throw Refusal{
            trText("Sign", "the document is damaged: it does not tell where its cross-reference is")};
    return offset;
}

std::string randomBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(count)) != 1)
        throw Refusal{trText("Sign", "there are no random numbers")};
    return bytes;
}

// Consecutive numbers, as cross-references list them.
struct Run
{
    int first;
    std::vector<std::pair<std::size_t, int>> entries; // position, generation
};

std::vector<Run> runsOf(const std::map<QPDFObjGen, std::size_t>& positions)
{
    std::vector<Run> runs;
    for (const auto& [object, position] : positions) {
        if (runs.empty() ||
            runs.back().first + static_cast<int>(runs.back().entries.size()) != object.getObj())
            runs.push_back({object.getObj(), {}});
        runs.back().entries.emplace_back(position, object.getGen());
    }
    return runs;
}

std::string bigEndian(std::size_t number, int size)
{
    std::string bytes;
    while (size-- > 0)
        bytes += static_cast<char>(number >> (8 * size));
    return bytes;
}

} // namespace

Revision::Revision(Document& document) : m_document(document), m_cipher(document.file())
{
    const std::string_view bytes = document.bytes();
    m_before = lastCrossReference(bytes);
    const std::size_t start = afterBlanks(bytes, m_before);
    m_isTable = bytes.substr(start).starts_with("xref");
    if (!m_isTable && (start == bytes.size() || std::isdigit(static_cast<unsigned char>(bytes[start])) == 0))
        throw Refusal{trText("Sign", "the document is damaged: it has no cross-reference where it says")};

    // What the document says is not always right.
    QPDFObjectHandle size = document.file().getTrailer().getKey("/Size");
    long long next = size.isInteger() ? size.getIntValue() : 1;
    const std::map<QPDFObjGen, QPDFXRefEntry> known = document.file().getXRefTable();
    if (!known.empty())
        next = std::max<long long>(next, known.rbegin()->first.getObj() + 1LL);
    if (next < 1 || next > largestNumber - 1000)
        throw Refusal{trText("Sign", "the document has no numbers left for further objects")};
    m_next = static_cast<int>(next);
    if (!bytes.ends_with('\n') && !bytes.ends_with('\r'))
        m_bytes += '\n';
}

QPDFObjGen Revision::newObject()
{
    const QPDFObjGen number(m_next++, 0);
    // qpdf takes references to objects that it does not have for null and leaves them out.
    m_document.file().replaceObject(number, QPDFObjectHandle::newDictionary());
    return number;
}

QPDFObjectHandle Revision::reference(QPDFObjGen object)
{
    return m_document.file().getObject(object);
}

std::size_t Revision::position() const
{
    return m_document.bytes().size() + m_bytes.size();
}

void Revision::begin(QPDFObjGen number)
{
    if (!m_positions.emplace(number, position()).second)
        throw Refusal{trText("Sign", "the document is damaged: one object is two")};
    m_bytes += std::to_string(number.getObj()) + ' ' + std::to_string(number.getGen()) + " obj\n";
}

void Revision::finish()
{
    m_bytes += "\nendobj\n";
}

void Revision::add(QPDFObjGen number, QPDFObjectHandle object)
{
    begin(number);
    if (object.isDictionary()) { // itself, not a reference to it
        m_bytes += "<<";
        writeEntries(object, number);
        m_bytes += " >>";
    } else {
        m_bytes += '[';
        for (const QPDFObjectHandle& item : object.aitems()) {
            m_bytes += ' ';
            write(item, number);
        }
        m_bytes += " ]";
    }
    finish();
}

void Revision::addStream(QPDFObjGen number, const QPDFObjectHandle& dictionary, std::string_view data)
{
    const std::string written = m_cipher.ofStream(data, number);
    begin(number);
    m_bytes += "<<";
    writeEntries(dictionary, number);
    m_bytes += " /Length " + std::to_string(written.size()) + " >>\nstream\n" + written + "\nendstream";
    finish();
}

void Revision::addSignature(QPDFObjGen number, const QPDFObjectHandle& dictionary, std::size_t reservedSize)
{
    begin(number);
    m_bytes += "<<";
    writeEntries(dictionary, number);
    Room room{};
    m_bytes += " /ByteRange ";
    room.ranges = m_bytes.size();
    m_bytes.append(sizeof("[0    ]") + 3 * offsetDigits, ' ');
    m_bytes += " /Contents ";
    room.contents = m_bytes.size();
    room.size = 2 * reservedSize + 2;
    m_bytes += '<' + std::string(2 * reservedSize, '0') + "> >>";
    m_room = room;
    finish();
}

void Revision::write(QPDFObjectHandle object, std::optional<QPDFObjGen> owner)
{
    if (object.isIndirect())
        m_bytes += object.getObjGen().unparse(' ') + " R";
    else if (object.isString())
        writeString(object.getStringValue(), owner);
    else if (object.isDictionary()) {
        m_bytes += "<<";
        writeEntries(object, owner);
        m_bytes += " >>";
    } else if (object.isArray()) {
        m_bytes += '[';
        for (const QPDFObjectHandle& item : object.aitems()) {
            m_bytes += ' ';
            write(item, owner);
        }
        m_bytes += " ]";
    } else
        m_bytes += object.unparse();
}

void Revision::writeEntries(QPDFObjectHandle dictionary, std::optional<QPDFObjGen> owner)
{
    for (auto& [key, value] : dictionary.getDictAsMap()) {
        m_bytes += ' ' + QPDFObjectHandle::newName(key).unparse() + ' ';
        write(value, owner);
    }
}

void Revision::writeString(const std::string& text, std::optional<QPDFObjGen> owner)
{
    m_bytes += '<' + hexadecimal(owner ? m_cipher.ofString(text, *owner) : text) + '>';
}

QPDFObjectHandle Revision::trailer()
{
    QPDFObjectHandle entries = m_document.file().getTrailer().shallowCopy();
    // Of the cross-reference before, whichever kind it is.
    for (const char* const own : {"/DecodeParms", "/Filter", "/Index", "/Length", "/Type", "/W", "/XRefStm"})
        entries.removeKey(own);
    entries.replaceKey("/Size", QPDFObjectHandle::newInteger(m_next));
    entries.replaceKey("/Prev", QPDFObjectHandle::newInteger(static_cast<long long>(m_before)));
    if (QPDFObjectHandle id = entries.getKey("/ID"); id.isArray() && id.getArrayNItems() == 2) {
        id = id.shallowCopy();
        id.setArrayItem(1, QPDFObjectHandle::newString(randomBytes(16)));
        entries.replaceKey("/ID", id);
    }
    return entries;
}

void Revision::writeTable()
{
    m_bytes += "xref\n";
    for (const Run& run : runsOf(m_positions)) {
        m_bytes += std::to_string(run.first) + ' ' + std::to_string(run.entries.size()) + '\n';
        for (const auto& [position, generation] : run.entries)
            m_bytes += digits(position, offsetDigits) + ' ' +
                       digits(static_cast<std::size_t>(generation), 5) + " n \n";
    }
    m_bytes += "trailer\n<<";
    writeEntries(trailer(), std::nullopt);
    m_bytes += " >>\n";
}

void Revision::writeTableStream()
{
    constexpr int positionSize = 5;
    const QPDFObjGen number = newObject();
    begin(number); // which is in the table, too
    std::string data;
    QPDFObjectHandle index = QPDFObjectHandle::newArray();
    for (const Run& run : runsOf(m_positions)) {
        index.appendItem(QPDFObjectHandle::newInteger(run.first));
        index.appendItem(QPDFObjectHandle::newInteger(static_cast<long long>(run.entries.size())));
        for (const auto& [position, generation] : run.entries)
            data +=
                '\1' + bigEndian(position, positionSize) + bigEndian(static_cast<std::size_t>(generation), 2);
    }
    QPDFObjectHandle entries = trailer();
    entries.replaceKey("/Type", QPDFObjectHandle::newName("/XRef"));
    entries.replaceKey("/W", QPDFObjectHandle::parse("[1 " + std::to_string(positionSize) + " 2]"));
    entries.replaceKey("/Index", index);
    entries.replaceKey("/Length", QPDFObjectHandle::newInteger(static_cast<long long>(data.size())));
    m_bytes += "<<";
    writeEntries(entries, std::nullopt);
    m_bytes += " >>\nstream\n" + data + "\nendstream";
    finish();
}

void Revision::end()
{
    const std::size_t start = position();
    if (m_isTable)
        writeTable();
    else
        writeTableStream();
    m_bytes += "startxref\n" + std::to_string(start) + "\n%%EOF\n";
    if (position() > largestOffset)
        throw Refusal{trText("Sign", "the document is too large")};
    if (!m_room)
        return;
    const std::size_t before = m_document.bytes().size() + m_room->contents;
    const std::size_t behind = before + m_room->size;
    const std::string ranges = "[0 " + std::to_string(before) + ' ' + std::to_string(behind) + ' ' +
                               std::to_string(position() - behind) + ']';
    m_bytes.replace(m_room->ranges, ranges.size(), ranges);
}

std::vector<std::string_view> Revision::signedParts() const
{
    const std::string_view bytes = m_bytes;
    return {m_document.bytes(), bytes.substr(0, m_room->contents),
            bytes.substr(m_room->contents + m_room->size)};
}

void Revision::putSignature(std::string_view signature)
{
    if (2 * signature.size() + 2 > m_room->size)
        throw Refusal{trText("Sign", "the signature is longer than the room for it")};
    m_bytes.replace(m_room->contents + 1, 2 * signature.size(), hexadecimal(signature));
}

} // namespace sign
