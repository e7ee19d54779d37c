#include "document_signing.h"

#include "drawn_fields.h"
#include "numbers.h"
#include "refusal.h"
#include "sealed_ink.h"
#include "texts.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <utility>

namespace sign {

namespace {

// Of annotations: they are printed, and stay as they are.
constexpr int printed = 4;
constexpr int locked = 128;
// In units of the page, which are written with four decimals: the signature stays in place to one in a
// hundred.
constexpr double leastSide = 0.01;
// Of forms: there are signatures, and whoever saves has to append.
constexpr int signaturesExist = 1;
constexpr int appendOnly = 2;

QPDFObjectHandle text(const std::string& utf8)
{
    return QPDFObjectHandle::newUnicodeString(utf8);
}

std::string pdfTime(std::time_t time)
{
    std::tm local{};
    localtime_r(&time, &local);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "D:%Y%m%d%H%M%S", &local);
    const long minutes = std::abs(local.tm_gmtoff) / 60;
    const auto twoDigits = [](long number) { return std::to_string(100 + number).substr(1) + '\''; };
    return date.data() + std::string(local.tm_gmtoff < 0 ? "-" : "+") + twoDigits(minutes / 60) +
           twoDigits(minutes % 60);
}

QPDFObjectHandle rectangle(const Rectangle& corners)
{
    QPDFObjectHandle array = QPDFObjectHandle::newArray();
    for (const double number : {corners.left, corners.bottom, corners.right, corners.top})
        array.appendItem(QPDFObjectHandle::parse(decimal(number, 4)));
    return array;
}

QPDFObjectHandle signatureDictionary(const Statement& statement)
{
    QPDFObjectHandle signature =
        QPDFObjectHandle::parse("<< /Type /Sig /Filter /Adobe.PPKLite /SubFilter /ETSI.CAdES.detached >>");
    signature.replaceKey("/M", QPDFObjectHandle::newString(pdfTime(statement.time)));
    for (const auto& [key, value] :
         {std::pair("/Name", &statement.name), std::pair("/Reason", &statement.reason),
          std::pair("/Location", &statement.location)})
        if (!value->empty())
            signature.replaceKey(key, text(*value));
    return signature;
}

QPDFObjectHandle transformation(const char* method, QPDFObjectHandle parameters,
                                const QPDFObjectHandle& catalog)
{
    parameters.replaceKey("/Type", QPDFObjectHandle::newName("/TransformParams"));
    parameters.replaceKey("/V", QPDFObjectHandle::newName("/1.2"));
    QPDFObjectHandle reference = QPDFObjectHandle::parse("<< /Type /SigRef >>");
    reference.replaceKey("/TransformMethod", QPDFObjectHandle::newName(method));
    reference.replaceKey("/TransformParams", parameters);
    reference.replaceKey("/Data", catalog);
    return reference;
}

// A field may say what its signature locks; the signature repeats it.
void lockFields(QPDFObjectHandle signature, QPDFObjectHandle lock, const QPDFObjectHandle& catalog)
{
    QPDFObjectHandle fields = QPDFObjectHandle::newDictionary();
    for (const char* const key : {"/Action", "/Fields"})
        if (lock.hasKey(key))
            fields.replaceKey(key, lock.getKey(key));
    QPDFObjectHandle references = QPDFObjectHandle::newArray();
    references.appendItem(transformation("/FieldMDP", fields, catalog));
    if (lock.hasKey("/P")) {
        QPDFObjectHandle changes = QPDFObjectHandle::newDictionary();
        changes.replaceKey("/P", lock.getKey("/P"));
        references.appendItem(transformation("/DocMDP", changes, catalog));
    }
    signature.replaceKey("/Reference", references);
}

// The object itself, not a reference to it.
QPDFObjectHandle copy(QPDFObjectHandle object)
{
    return object.shallowCopy();
}

} // namespace

DocumentSigning::DocumentSigning(Document& document, const Spot& spot, bool isSealed,
                                 double areaHeightByWidth, const std::vector<std::string>& lines)
    : m_document(document), m_isSealed(isSealed), m_isNew(spot.field.empty()), m_pageNumber(spot.page)
{
    using Kind = Change::Kind;
    if (!m_isNew) {
        if (!isSealed)
            throw Refusal{
                filled(trText("Sign", "without a certificate there is no seal to fill the field %1 with"),
                       {spot.field})};
        m_field = document.fieldToSign(spot.field);
        m_pageNumber = m_field.page;
    } else if (isSealed) {
        m_field.name = document.newFieldName();
    }
    document.refuseUnlessAllowed(
        {!m_isNew ? Kind::SignField : (isSealed ? Kind::NewField : Kind::Mark), m_field.name});
    m_drawsFields = isSealed && needsDrawnFields(document);
    std::optional<TextEnd> text;
    if (!spot.after.empty()) {
        text = findText(document, spot.after, spot.page);
        m_pageNumber = text->page;
    }
    m_page = document.page(m_pageNumber);
    if (text)
        m_layout = Layout::behind(m_page, *text, spot.corner.width, areaHeightByWidth, lines);
    else if (m_isNew)
        m_layout = Layout::at(m_page, spot.corner, areaHeightByWidth, lines);
    else
        m_layout = Layout::in(m_page, m_field.place, lines);
}

std::string DocumentSigning::revision(const Ink& ink, const Statement& statement,
                                      const std::optional<Seal>& seal, const InkSealing& sealInk)
{
    Revision revision(m_document);
    const Appearance appearance = m_layout->appearance(ink);
    const QPDFObjGen form = revision.newObject();
    revision.addStream(form, appearance.dictionary, appearance.data);
    QPDFObjectHandle sealedInk = QPDFObjectHandle::newNull();
    if (sealInk) {
        const QPDFObjGen stream = revision.newObject();
        revision.addStream(stream, QPDFObjectHandle::newDictionary(), sealInk(m_document.bytes()));
        sealedInk = revision.reference(stream);
    }

    m_annotation = m_isNew ? revision.newObject() : m_field.widget.getObjGen();
    QPDFObjectHandle widget = shown(revision.reference(form), appearance.place);
    if (m_isSealed)
        addSealed(revision, widget, statement, sealedInk, seal->reservedSize);
    else
        addMark(revision, widget, statement, sealedInk);
    revision.end();
    m_document.refuseDamage();
    if (m_isSealed)
        revision.putSignature(seal->sign(revision.signedParts()));
    return revision.bytes();
}

// The annotation that shows the form there.
QPDFObjectHandle DocumentSigning::shown(const QPDFObjectHandle& form, const Place& place)
{
    QPDFObjectHandle widget = m_isNew ? QPDFObjectHandle::newDictionary() : copy(m_field.widget);
    QPDFObjectHandle appearances = QPDFObjectHandle::newDictionary();
    appearances.replaceKey("/N", form);
    widget.replaceKey("/AP", appearances);
    widget.removeKey("/AS");
    QPDFObjectHandle flags = widget.getKey("/F");
    const long long before = flags.isInteger() ? flags.getIntValue() : 0;
    widget.replaceKey("/F", QPDFObjectHandle::newInteger(before | printed | locked));
    if (m_isNew) {
        widget.replaceKey("/Type", QPDFObjectHandle::newName("/Annot"));
        const Rectangle corners = m_page.toPage(place);
        if (std::min(corners.width(), corners.height()) < leastSide)
            throw Refusal{trText("Sign", "the units of the page are too large for a signature of this size")};
        widget.replaceKey("/Rect", rectangle(corners));
        widget.replaceKey("/P", m_page.object);
    }
    return widget;
}

void DocumentSigning::addMark(Revision& revision, QPDFObjectHandle stamp, const Statement& statement,
                              const QPDFObjectHandle& sealedInk)
{
    stamp.replaceKey("/Subtype", QPDFObjectHandle::newName("/Stamp"));
    stamp.replaceKey("/M", QPDFObjectHandle::newString(pdfTime(statement.time)));
    if (!statement.name.empty())
        stamp.replaceKey("/T", text(statement.name));
    if (!statement.reason.empty())
        stamp.replaceKey("/Contents", text(statement.reason));
    stamp.replaceKey(sealedInkKey, sealedInk); // nothing where it is null
    revision.add(m_annotation, stamp);
    addToPage(revision);
}

void DocumentSigning::addSealed(Revision& revision, QPDFObjectHandle widget, const Statement& statement,
                                const QPDFObjectHandle& sealedInk, std::size_t reservedSize)
{
    QPDFObjectHandle signature = signatureDictionary(statement);
    signature.replaceKey(sealedInkKey, sealedInk);
    if (!m_isNew)
        if (QPDFObjectHandle lock = m_field.object.getKey("/Lock"); lock.isDictionary())
            lockFields(signature, lock, m_document.catalog());
    const QPDFObjGen value = revision.newObject();
    revision.addSignature(value, signature, reservedSize);

    widget.replaceKey("/V", revision.reference(value));
    if (m_isNew) {
        widget.replaceKey("/Subtype", QPDFObjectHandle::newName("/Widget"));
        widget.replaceKey("/FT", QPDFObjectHandle::newName("/Sig"));
        widget.replaceKey("/T", text(m_field.name));
        addToPage(revision);
    } else if (!m_field.object.isSameObjectAs(m_field.widget)) {
        // The value is the field's. Poppler looks for it in the widget.
        QPDFObjectHandle field = copy(m_field.object);
        field.replaceKey("/V", revision.reference(value));
        revision.add(m_field.object.getObjGen(), field);
    }
    revision.add(m_annotation, widget);
    addToForm(revision);
}

void DocumentSigning::addToPage(Revision& revision)
{
    QPDFObjectHandle annotations = m_page.object.getKey("/Annots");
    QPDFObjectHandle more = annotations.isArray() ? copy(annotations) : QPDFObjectHandle::newArray();
    more.appendItem(revision.reference(m_annotation));
    if (annotations.isArray() && annotations.isIndirect() && !m_document.sharesAnnotations(m_page)) {
        revision.add(annotations.getObjGen(), more);
        return;
    }
    QPDFObjectHandle page = copy(m_page.object);
    page.replaceKey("/Annots", more);
    revision.add(m_page.object.getObjGen(), page);
}

void DocumentSigning::addToForm(Revision& revision)
{
    QPDFObjectHandle before = m_document.form();
    QPDFObjectHandle form = before.isDictionary() ? copy(before) : QPDFObjectHandle::newDictionary();
    QPDFObjectHandle flags = form.getKey("/SigFlags");
    const long long flagsBefore = flags.isInteger() ? flags.getIntValue() : 0;
    form.replaceKey("/SigFlags", QPDFObjectHandle::newInteger(flagsBefore | signaturesExist | appendOnly));
    if (m_drawsFields)
        form.replaceKey("/NeedAppearances", QPDFObjectHandle::newBool(false));
    if (m_isNew) {
        QPDFObjectHandle fields = form.getKey("/Fields");
        QPDFObjectHandle more = fields.isArray() ? copy(fields) : QPDFObjectHandle::newArray();
        more.appendItem(revision.reference(m_annotation));
        if (fields.isArray() && fields.isIndirect())
            revision.add(fields.getObjGen(), more);
        else
            form.replaceKey("/Fields", more);
    }
    if (before.isDictionary() && before.isIndirect()) {
        revision.add(before.getObjGen(), form);
        return;
    }
    QPDFObjectHandle catalog = copy(m_document.catalog());
    catalog.replaceKey("/AcroForm", form);
    revision.add(m_document.catalog().getObjGen(), catalog);
}

void DocumentSigning::refuseUnlessContinued(QPDF& written) const
{
    const std::map<QPDFObjGen, QPDFXRefEntry> after = written.getXRefTable();
    for (const auto& [object, before] : m_document.file().getXRefTable()) {
        const auto found = after.find(object);
        const bool isThere = found != after.end();
        if (isThere && found->second.getType() == 1 &&
            static_cast<std::size_t>(found->second.getOffset()) >= m_document.bytes().size())
            continue;
        const bool isSame =
            isThere && found->second.getType() == before.getType() &&
            (before.getType() == 1 ? found->second.getOffset() == before.getOffset()
                                   : found->second.getObjStreamNumber() == before.getObjStreamNumber());
        if (!isSame)
            throw Refusal{trText("Sign", "the document cannot be continued: it contradicts itself")};
    }
}

void DocumentSigning::refuseUnlessIn(const std::string& file) const
{
    QPDF written;
    written.setSuppressWarnings(true);
    written.setAttemptRecovery(false);
    written.processFile(file.c_str(), m_document.password().c_str());
    refuseUnlessContinued(written);
    QPDFObjectHandle annotations = written.getObject(m_page.object.getObjGen()).getKey("/Annots");
    bool isThere = false;
    if (annotations.isArray())
        for (QPDFObjectHandle annotation : annotations.aitems())
            isThere = isThere || (annotation.getObjGen() == m_annotation && annotation.isDictionary() &&
                                  annotation.getKey("/AP").getKeyIfDict("/N").isStream());
    if (isThere && m_isSealed) {
        QPDFObjectHandle field = written.getObject(m_isNew ? m_annotation : m_field.object.getObjGen());
        QPDFObjectHandle contents = field.getKey("/V").getKeyIfDict("/Contents");
        isThere = contents.isString() && contents.getStringValue().starts_with('0'); // a sequence in DER
    }
    if (!isThere)
        throw Refusal{trText("Sign", "the signature cannot be found again: the document contradicts itself")};
}

} // namespace sign
