#include "document.h"

#include "refusal.h"
#include "texts.h"

#include <qpdf/QPDFExc.hh>
#include <qpdf/QUtil.hh>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <set>
#include <utility>

namespace sign {

namespace {

// Deeper trees are loops or attacks.
constexpr std::size_t deepest = 100;
constexpr std::size_t longestName = 4096; // of a field; many may have the same string in it
constexpr double farthest = 1e7;
// Of annotations: invisible, hidden, not on the screen.
constexpr long long hiddenFlags = 1 + 2 + 32;

bool isWarningOfNoMatter(const QPDFExc& warning)
{
    // Whoever counts wrongly there has still told where everything is.
    return warning.getMessageDetail().find("reported number of objects") != std::string::npos;
}

Refusal damaged(const std::string& what)
{
    return {filled(trText("Sign", "the document is damaged: %1"), {what})};
}

bool isSignature(QPDFObjectHandle value)
{
    return value.isDictionary() && value.hasKey("/Contents");
}

// What its transformations with this name are told.
std::vector<QPDFObjectHandle> transformations(QPDFObjectHandle signature, const std::string& method)
{
    std::vector<QPDFObjectHandle> parameters;
    QPDFObjectHandle references = signature.getKeyIfDict("/Reference");
    if (references.isArray())
        for (QPDFObjectHandle reference : references.aitems())
            if (reference.isDictionary() && reference.getKey("/TransformMethod").isNameAndEquals(method)) {
                QPDFObjectHandle told = reference.getKey("/TransformParams");
                parameters.push_back(told.isDictionary() ? told : QPDFObjectHandle::newDictionary());
            }
    return parameters;
}

bool isListed(QPDFObjectHandle names, const std::string& field)
{
    if (!names.isArray())
        return false;
    for (QPDFObjectHandle name : names.aitems()) {
        if (!name.isString())
            continue;
        const std::string listed = name.getUTF8Value();
        if (field == listed || field.starts_with(listed + "."))
            return true;
    }
    return false;
}

bool isLockedBy(QPDFObjectHandle lock, const std::string& field)
{
    QPDFObjectHandle action = lock.getKey("/Action");
    const bool isIn = isListed(lock.getKey("/Fields"), field);
    return action.isNameAndEquals("/All") || (action.isNameAndEquals("/Include") && isIn) ||
           (action.isNameAndEquals("/Exclude") && !isIn);
}

int allowedLevel(QPDFObjectHandle parameters)
{
    QPDFObjectHandle level = parameters.getKey("/P");
    const long long number = level.isInteger() ? level.getIntValue() : 2;
    return number <= 1 ? 1 : number == 3 ? 3 : 2;
}

void refuseWhereCertified(int allowed, const Change& change)
{
    if (allowed == 1)
        throw Refusal{trText("Sign", "the document is certified: it must not be changed any more")};
    if (allowed == 2 && change.kind != Change::Kind::SignField)
        throw Refusal{trText(
            "Sign",
            "the document is certified: fields that it has may be filled and signed, nothing may be added")};
}

} // namespace

double Page::width() const
{
    return (rotation % 180 == 0 ? visible.width() : visible.height()) * unit;
}

double Page::height() const
{
    return (rotation % 180 == 0 ? visible.height() : visible.width()) * unit;
}

Rectangle Page::toPage(const Place& place) const
{
    const double left = place.left / unit;
    const double right = place.right() / unit;
    const double top = place.top / unit;
    const double bottom = place.bottom() / unit;
    switch (rotation) {
    case 90:
        return {visible.left + top, visible.bottom + left, visible.left + bottom, visible.bottom + right};
    case 180:
        return {visible.right - right, visible.bottom + top, visible.right - left, visible.bottom + bottom};
    case 270:
        return {visible.right - bottom, visible.top - right, visible.right - top, visible.top - left};
    default:
        return {visible.left + left, visible.top - bottom, visible.left + right, visible.top - top};
    }
}

Place Page::toPlace(const Rectangle& at) const
{
    double left = at.left - visible.left;
    double top = visible.top - at.top;
    switch (rotation) {
    case 90:
        left = at.bottom - visible.bottom;
        top = at.left - visible.left;
        break;
    case 180:
        left = visible.right - at.right;
        top = at.bottom - visible.bottom;
        break;
    case 270:
        left = visible.top - at.top;
        top = visible.right - at.right;
        break;
    default:
        break;
    }
    const bool isLying = rotation % 180 != 0;
    return {left * unit, top * unit, (isLying ? at.height() : at.width()) * unit,
            (isLying ? at.width() : at.height()) * unit};
}

Document::Document(std::string_view bytes, const std::string& password) : m_bytes(bytes)
{
    if (!bytes.starts_with("%PDF-"))
        throw Refusal{bytes.substr(0, 1024).find("%PDF-") == std::string_view::npos
                          ? trText("Sign", "it is no PDF document")
                          : trText("Sign", "something stands before the PDF document")};
    // Older documents have passwords in other encodings.
    const std::vector<std::string> passwords = QUtil::possible_repaired_encodings(password);
    if (std::none_of(passwords.begin(), passwords.end(),
                     [this](const std::string& candidate) { return opensBy(candidate); }))
        throw Refusal{password.empty() ? trText("Sign", "the document needs a password")
                                       : trText("Sign", "the password does not open the document")};
    for (const QPDFExc& warning : m_file->getWarnings())
        if (!isWarningOfNoMatter(warning))
            throw damaged(warning.getMessageDetail());
    if (!catalog().isIndirect())
        throw damaged(trText("Sign", "its catalog is no object of its own"));
}

bool Document::opensBy(const std::string& password)
{
    m_file = QPDF::create();
    m_file->setSuppressWarnings(true);
    // What is repaired here would be another document than the one that others see.
    m_file->setAttemptRecovery(false);
    try {
        m_file->processMemoryFile("document", m_bytes.data(), m_bytes.size(), password.c_str());
    } catch (const QPDFExc& error) {
        if (error.getErrorCode() == qpdf_e_password)
            return false;
        throw error.getErrorCode() == qpdf_e_unsupported ? Refusal{error.getMessageDetail()}
                                                         : damaged(error.getMessageDetail());
    }
    m_password = password;
    return true;
}

void Document::refuseDamage()
{
    for (const QPDFExc& warning : m_file->getWarnings())
        throw damaged(warning.getMessageDetail());
}

QPDFObjectHandle Document::catalog()
{
    QPDFObjectHandle root = m_file->getTrailer().getKey("/Root");
    if (!root.isDictionary())
        throw damaged(trText("Sign", "it has no catalog"));
    return root;
}

QPDFObjectHandle Document::form()
{
    QPDFObjectHandle form = catalog().getKey("/AcroForm");
    return form.isDictionary() ? form : QPDFObjectHandle::newNull();
}

// Not by qpdf's own list, which repairs the tree.
const std::vector<QPDFObjectHandle>& Document::pages()
{
    if (!m_pages.empty())
        return m_pages;
    std::set<QPDFObjGen> seen;
    struct Step
    {
        std::vector<QPDFObjectHandle> kids;
        std::size_t next = 0;
    };
    std::vector<Step> path = {{{catalog().getKey("/Pages")}}};
    while (!path.empty()) {
        Step& step = path.back();
        if (step.next == step.kids.size()) {
            path.pop_back();
            continue;
        }
        QPDFObjectHandle node = step.kids[step.next++];
        if (!node.isIndirect() || !node.isDictionary() || !seen.insert(node.getObjGen()).second ||
            path.size() > deepest)
            throw damaged(trText("Sign", "its page tree is wrong"));
        QPDFObjectHandle kids = node.getKey("/Kids");
        if (kids.isArray())
            path.push_back({kids.getArrayAsVector()});
        else
            m_pages.push_back(node);
    }
    refuseDamage();
    if (m_pages.empty())
        throw damaged(trText("Sign", "it has no pages"));
    return m_pages;
}

Page Document::page(int number)
{
    if (number < 1 || number > pageCount())
        throw Refusal{filled(trText("Sign", "there is no page %1: the document has %2"),
                             {std::to_string(number), std::to_string(pageCount())})};
    Page page;
    page.object = pages()[static_cast<std::size_t>(number) - 1];
    const Rectangle media =
        rectangleOf(inheritedValue(page.object, "/MediaBox")).value_or(Rectangle{0, 0, 612, 792});
    const Rectangle crop = rectangleOf(inheritedValue(page.object, "/CropBox")).value_or(media);
    page.visible = {std::max(media.left, crop.left), std::max(media.bottom, crop.bottom),
                    std::min(media.right, crop.right), std::min(media.top, crop.top)};
    if (page.visible.width() <= 0 || page.visible.height() <= 0)
        page.visible = media;
    QPDFObjectHandle rotation = inheritedValue(page.object, "/Rotate");
    if (rotation.isInteger() && rotation.getIntValue() % 90 == 0)
        page.rotation = static_cast<int>((rotation.getIntValue() % 360 + 360) % 360);
    QPDFObjectHandle unit = page.object.getKey("/UserUnit");
    if (unit.isNumber() && unit.getNumericValue() > 0 && unit.getNumericValue() < farthest)
        page.unit = unit.getNumericValue();
    refuseDamage();
    return page;
}

bool Document::sharesAnnotations(const Page& page)
{
    const QPDFObjGen own = QPDFObjectHandle(page.object).getKey("/Annots").getObjGen();
    const auto hasThem = [own](QPDFObjectHandle other) { return other.getKey("/Annots").getObjGen() == own; };
    return own.isIndirect() && std::count_if(pages().begin(), pages().end(), hasThem) > 1;
}

std::vector<FormField> Document::fields()
{
    std::vector<FormField> fields;
    std::set<QPDFObjGen> seen;
    const std::function<void(QPDFObjectHandle, std::string, std::string, std::size_t)> visit =
        [&](QPDFObjectHandle node, std::string name, std::string type, std::size_t depth) {
            if (QPDFObjectHandle own = node.getKeyIfDict("/T"); own.isString()) {
                if (!name.empty())
                    name += '.';
                name += own.getUTF8Value();
            }
            if (!node.isIndirect() || !node.isDictionary() || !seen.insert(node.getObjGen()).second ||
                depth > deepest || name.size() > longestName)
                throw damaged(trText("Sign", "its form fields are wrong"));
            if (QPDFObjectHandle own = node.getKey("/FT"); own.isName())
                type = own.getName();
            FormField field{name, type, node, {}};
            QPDFObjectHandle kids = node.getKey("/Kids");
            if (kids.isArray() && kids.getArrayNItems() > 0) {
                field.widgets = kids.getArrayAsVector();
                QPDFObjectHandle first = field.widgets.front();
                if (type.empty() || (first.isDictionary() && first.hasKey("/T"))) {
                    for (const QPDFObjectHandle& kid : field.widgets)
                        visit(kid, name, type, depth + 1);
                    return;
                }
            } else if (node.getKey("/Subtype").isNameAndEquals("/Widget")) {
                field.widgets.push_back(node);
            }
            fields.push_back(std::move(field));
        };
    if (QPDFObjectHandle tops = form().getKeyIfDict("/Fields"); tops.isArray())
        for (const QPDFObjectHandle& top : tops.aitems())
            visit(top, {}, {}, 0);
    refuseDamage();
    return fields;
}

std::vector<SignatureField> Document::signatureFields()
{
    std::vector<SignatureField> signatures;
    std::map<QPDFObjGen, std::size_t> widgets;
    for (FormField& field : fields()) {
        if (field.type != "/Sig")
            continue;
        SignatureField signature{field.name, field.object, QPDFObjectHandle::newNull(), 0, {}, false};
        if (!field.widgets.empty() && field.widgets.front().isIndirect() &&
            field.widgets.front().isDictionary()) {
            signature.widget = field.widgets.front();
            widgets.emplace(signature.widget.getObjGen(), signatures.size());
        }
        signature.isSigned = isSignature(field.object.getKey("/V"));
        signatures.push_back(std::move(signature));
    }
    for (std::size_t number = 1; !widgets.empty() && number <= pages().size(); ++number) {
        QPDFObjectHandle annotations = QPDFObjectHandle(pages()[number - 1]).getKey("/Annots");
        if (!annotations.isArray())
            continue;
        for (const QPDFObjectHandle& annotation : annotations.aitems()) {
            const auto found = widgets.find(annotation.getObjGen());
            if (!annotation.isIndirect() || found == widgets.end())
                continue;
            SignatureField& field = signatures[found->second];
            field.page = static_cast<int>(number);
            if (const std::optional<Rectangle> rectangle = rectangleOf(field.widget.getKey("/Rect")))
                field.place = page(field.page).toPlace(*rectangle);
        }
    }
    refuseDamage();
    return signatures;
}

SignatureField Document::fieldToSign(const std::string& name)
{
    std::vector<SignatureField> fields = signatureFields();
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [&](const SignatureField& field) { return field.name == name; });
    if (found == fields.end())
        throw Refusal{filled(trText("Sign", "there is no signature field %1"), {name})};
    SignatureField field = *found;
    if (field.isSigned)
        throw Refusal{filled(trText("Sign", "the field %1 is signed"), {name})};
    if (!hasRoom(field))
        throw Refusal{filled(trText("Sign", "the field %1 has no room on a page"), {name})};
    QPDFObjectHandle seen = field.widget.getKey("/F");
    if (seen.isInteger() && (seen.getIntValue() & hiddenFlags) != 0)
        throw Refusal{filled(trText("Sign", "the field %1 is hidden"), {name})};
    QPDFObjectHandle flags = inheritedValue(field.object, "/Ff");
    if (flags.isInteger() && (flags.getIntValue() & 1) != 0)
        throw Refusal{filled(trText("Sign", "the field %1 is read-only"), {name})};
    QPDFObjectHandle demands = field.object.getKey("/SV");
    QPDFObjectHandle demanded = demands.getKeyIfDict("/Ff");
    if (demanded.isInteger() && demanded.getIntValue() != 0)
        throw Refusal{filled(
            trText("Sign", "the field %1 demands a signature of a certain kind, which cannot be promised"),
            {name})};
    refuseDamage();
    return field;
}

bool Document::hasRoom(const SignatureField& field)
{
    constexpr double least = 1; // point
    if (field.page == 0)
        return false;
    const Page on = page(field.page);
    return std::min(field.place.right(), on.width()) - std::max(field.place.left, 0.0) >= least &&
           std::min(field.place.bottom(), on.height()) - std::max(field.place.top, 0.0) >= least;
}

std::string Document::newFieldName()
{
    std::set<std::string> taken;
    for (const FormField& field : fields())
        taken.insert(field.name.substr(0, field.name.find('.')));
    int number = 1;
    while (taken.contains("Signature" + std::to_string(number)))
        ++number;
    return "Signature" + std::to_string(number);
}

void Document::refuseUnlessAllowed(const Change& change)
{
    using Kind = Change::Kind;
    const bool isField = change.kind != Kind::Mark;
    if (isField && !form().getKeyIfDict("/XFA").isNull())
        throw Refusal{trText("Sign", "the document is an XFA form, which cannot be signed here")};
    std::vector<QPDFObjectHandle> signatures;
    if (QPDFObjectHandle certifying = catalog().getKey("/Perms").getKeyIfDict("/DocMDP");
        certifying.isDictionary())
        signatures.push_back(certifying);
    for (const SignatureField& field : signatureFields())
        if (field.isSigned)
            signatures.push_back(QPDFObjectHandle(field.object).getKey("/V"));
    for (const QPDFObjectHandle& signature : signatures) {
        const Limits limits = limitsOf(signature);
        if (limits.certified)
            refuseWhereCertified(*limits.certified, change);
        if (isField && limits.locksField(change.field))
            throw Refusal{
                filled(trText("Sign", "a signature of the document locks the field %1"), {change.field})};
    }
    if (m_file->isEncrypted() && !m_file->ownerPasswordMatched()) {
        const bool isAllowed = change.kind == Kind::SignField
                                   ? m_file->allowModifyForm() || m_file->allowModifyAnnotation()
                                   : m_file->allowModifyAnnotation() &&
                                         (change.kind == Kind::Mark || m_file->allowModifyOther());
        if (!isAllowed)
            throw Refusal{
                trText("Sign", "the owner of the document does not allow this; the owner's password would")};
    }
    refuseDamage();
}

bool Limits::locksField(const std::string& name) const
{
    return std::any_of(locks.begin(), locks.end(),
                       [&](const QPDFObjectHandle& lock) { return isLockedBy(lock, name); });
}

Limits limitsOf(const QPDFObjectHandle& signature)
{
    Limits limits;
    for (const QPDFObjectHandle& parameters : transformations(signature, "/DocMDP"))
        limits.certified = std::min(allowedLevel(parameters), limits.certified.value_or(3));
    limits.locks = transformations(signature, "/FieldMDP");
    return limits;
}

QPDFObjectHandle inheritedValue(QPDFObjectHandle node, const std::string& key)
{
    for (std::size_t depth = 0; depth < deepest && node.isDictionary(); ++depth) {
        if (node.hasKey(key))
            return node.getKey(key);
        node = node.getKey("/Parent");
    }
    return QPDFObjectHandle::newNull();
}

std::optional<Rectangle> rectangleOf(QPDFObjectHandle array)
{
    if (!array.isRectangle())
        return std::nullopt;
    const QPDFObjectHandle::Rectangle corners = array.getArrayAsRectangle();
    const auto [left, right] = std::minmax(corners.llx, corners.urx);
    const auto [bottom, top] = std::minmax(corners.lly, corners.ury);
    const double largest = std::max({std::abs(left), std::abs(right), std::abs(bottom), std::abs(top)});
    if (!(largest < farthest))
        return std::nullopt;
    return Rectangle{left, bottom, right, top};
}

} // namespace sign
