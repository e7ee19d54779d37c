// A PDF document as far as signing needs it: pages, signature fields, what may still be changed.
#pragma once

#include "qpdf.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sign {

// In a page's own coordinates: any origin, upwards, in the page's units.
struct Rectangle
{
    double left = 0;
    double bottom = 0;
    double right = 0;
    double top = 0;

    double width() const { return right - left; }
    double height() const { return top - bottom; }
};

// On the page as people see it: turned and cropped, in points from its upper left corner, downwards.
struct Place
{
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;

    double right() const { return left + width; }
    double bottom() const { return top + height; }
};

struct Page
{
    QPDFObjectHandle object;
    Rectangle visible;
    int rotation = 0; // clockwise: 0, 90, 180 or 270 degrees
    double unit = 1;  // points that a unit of the coordinates is long

    // As people see it.
    double width() const;
    double height() const;
    Rectangle toPage(const Place& place) const;
    Place toPlace(const Rectangle& rectangle) const;
};

struct FormField
{
    std::string name; // with those of its parents, UTF-8
    std::string type; // as PDF has it: "/Tx" for text, for instance
    QPDFObjectHandle object;
    std::vector<QPDFObjectHandle> widgets; // what is seen of it, often the same object
};

struct SignatureField
{
    std::string name;
    QPDFObjectHandle object;
    QPDFObjectHandle widget; // the first; null without one
    int page = 0;            // from 1; 0 when it is on none
    Place place;
    bool isSigned = false;
};

// What is to be changed; a document may be certified or locked against it.
struct Change
{
    enum class Kind
    {
        Mark,      // an annotation
        NewField,  // with its signature
        SignField, // that exists
    };

    Kind kind;
    std::string field; // its name; of fields alone
};

// All members throw Refusal for a document that is damaged where they look.
class Document
{
public:
    // The bytes have to stay. Throws Refusal, also for a password that is missing or wrong.
    Document(std::string_view bytes, const std::string& password);

    std::string_view bytes() const { return m_bytes; }
    // In the encoding in which it opens the document.
    const std::string& password() const { return m_password; }
    QPDF& file() { return *m_file; }
    QPDFObjectHandle catalog();
    // Null where there is none.
    QPDFObjectHandle form();

    int pageCount() { return static_cast<int>(pages().size()); }
    // From 1. Throws Refusal when there is no such page.
    Page page(int number);

    // Whether the list of its annotations is that of another page, too.
    bool sharesAnnotations(const Page& page);

    std::vector<FormField> fields();
    std::vector<SignatureField> signatureFields();
    // That can be signed.
    SignatureField fieldToSign(const std::string& name);
    // That no field has.
    std::string newFieldName();

    // Throws Refusal, which tells what the document is certified or locked against.
    void refuseUnlessAllowed(const Change& change);

    // Throws Refusal when anything was wrong with what was read so far.
    void refuseDamage();

private:
    bool opensBy(const std::string& password);
    bool hasRoom(const SignatureField& field);
    const std::vector<QPDFObjectHandle>& pages();

    std::string_view m_bytes;
    std::string m_password;
    std::shared_ptr<QPDF> m_file;
    std::vector<QPDFObjectHandle> m_pages; // once asked for
};

// What a signature allows of later changes.
struct Limits
{
    // 1: nothing; 2: filling and signing of the fields that are there; 3: annotations and new fields that
    // are signed, too. None where it does not certify the document.
    std::optional<int> certified;
    std::vector<QPDFObjectHandle> locks; // of fields

    bool locksField(const std::string& name) const;
    bool areAny() const { return certified || !locks.empty(); }
};

Limits limitsOf(const QPDFObjectHandle& signature);

// A value that a page may have from the nodes above it; null without one.
QPDFObjectHandle inheritedValue(QPDFObjectHandle page, const std::string& key);

// Four numbers in any order of corners; nothing where it is no rectangle.
std::optional<Rectangle> rectangleOf(QPDFObjectHandle array);

} // namespace sign
