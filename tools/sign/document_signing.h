// One signature for a document, from the wish to the appended revision.
#pragma once

#include "appearance.h"
#include "document.h"
#include "revision.h"

#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sign {

// Where the signature goes: into a field, behind a text, or to a place on a page.
struct Spot
{
    std::string field; // empty: a new one
    std::string after; // empty: to the corner
    int page = 0;      // from 1; 0 for any that has the text
    Place corner;      // its height is not used, and behind a text only its width
};

// What the signature says of itself, UTF-8; what is empty is left out.
struct Statement
{
    std::string name;
    std::string reason;
    std::string location;
    std::time_t time = 0;
};

// What is sealed in the end; without a seal there is only a mark.
struct Seal
{
    std::size_t reservedSize;
    std::function<std::string(const std::vector<std::string_view>& parts)> sign;
};

// Seals the ink for somebody; given the document before.
using InkSealing = std::function<std::string(std::string_view document)>;

class DocumentSigning
{
public:
    // Whether the document may be signed there is checked here, so that nobody signs in vain. The lines
    // stand below the signature. Throws Refusal.
    DocumentSigning(Document& document, const Spot& spot, bool isSealed, double areaHeightByWidth,
                    const std::vector<std::string>& lines);

    // What follows the document's bytes. Throws Refusal.
    std::string revision(const Ink& ink, const Statement& statement, const std::optional<Seal>& seal,
                         const InkSealing& sealInk);

    // Reads what was written as others will. Throws Refusal when it is not the document with that signature.
    void refuseUnlessIn(const std::string& file) const;

    const std::string& field() const { return m_field.name; } // empty: none
    int page() const { return m_pageNumber; }

private:
    // What the revision does not change is what was read to decide whether it may be signed.
    void refuseUnlessContinued(QPDF& written) const;
    QPDFObjectHandle shown(const QPDFObjectHandle& form, const Place& place);
    void addMark(Revision& revision, QPDFObjectHandle stamp, const Statement& statement,
                 const QPDFObjectHandle& sealedInk);
    void addSealed(Revision& revision, QPDFObjectHandle widget, const Statement& statement,
                   const QPDFObjectHandle& sealedInk, std::size_t reservedSize);
    void addToPage(Revision& revision);
    void addToForm(Revision& revision);

    Document& m_document;
    bool m_isSealed;
    bool m_isNew; // field or annotation
    bool m_drawsFields = false;
    SignatureField m_field;
    int m_pageNumber;
    Page m_page;
    std::optional<Layout> m_layout;
    QPDFObjGen m_annotation; // once there is a revision
};

} // namespace sign
