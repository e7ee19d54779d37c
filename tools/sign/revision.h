// What is appended to a document so that it says more: new and changed objects and where they are. The bytes
// before stay as they are.
#pragma once

#include "document.h"
#include "document_cipher.h"
#include "qpdf.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sign {

class Revision
{
public:
    // The document has to stay. Throws Refusal for one that cannot be continued.
    explicit Revision(Document& document);

    // The number of an object that the document does not have yet, to be added later.
    QPDFObjGen newObject();
    QPDFObjectHandle reference(QPDFObjGen object);

    // A new object, or a changed one of the document. Each once.
    void add(QPDFObjGen number, QPDFObjectHandle object);
    // With these entries and its length.
    void addStream(QPDFObjGen number, const QPDFObjectHandle& dictionary, std::string_view data);
    // With these entries, and room for a signature of so many bytes over everything else. At most one.
    void addSignature(QPDFObjGen number, const QPDFObjectHandle& dictionary, std::size_t reservedSize);

    // What follows the document's bytes. Nothing can be added any more.
    void end();

    // What is signed: the whole file but the room for the signature.
    std::vector<std::string_view> signedParts() const;
    void putSignature(std::string_view signature);

    const std::string& bytes() const { return m_bytes; }

private:
    struct Room
    {
        std::size_t ranges;   // where in the bytes the numbers of /ByteRange begin
        std::size_t contents; // where /Contents begins, with its bracket
        std::size_t size;     // of /Contents with its brackets
    };

    void begin(QPDFObjGen number);
    void finish();
    std::size_t position() const; // in the file, of what comes next
    void write(QPDFObjectHandle object, std::optional<QPDFObjGen> owner);
    void writeEntries(QPDFObjectHandle dictionary, std::optional<QPDFObjGen> owner);
    void writeString(const std::string& text, std::optional<QPDFObjGen> owner);
    QPDFObjectHandle trailer();
    void writeTable();
    void writeTableStream();

    Document& m_document;
    DocumentCipher m_cipher;
    std::size_t m_before = 0; // where the document's last cross-reference is
    bool m_isTable = true;    // of what kind it is
    int m_next = 1;
    std::string m_bytes;
    std::map<QPDFObjGen, std::size_t> m_positions; // in the file
    std::optional<Room> m_room;
};

} // namespace sign
