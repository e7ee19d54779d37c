#include "later_changes.h"

#include "refusal.h"
#include "texts.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace sign {

namespace {

// Of values, so that nobody waits for a document that was made to be compared for hours.
constexpr std::size_t mostCompared = 5'000'000;

struct Forbidden
{
    std::string change;
};

using Keys = std::set<std::string_view>;

// What leads to an object, and so what else than anything it may be.
enum class Link
{
    Plain,
    Drawn,   // nothing else: in what is drawn, all names are free, and nothing leads elsewhere
    Page,    // a page
    Kid,     // a page or a part of the form
    Parent,  // what has this among its kids
    Part,    // a part of the form: a field, what is seen of it, what is above it
    Catalog, // the catalog
};

// Of the catalog: what is about the document and not seen, such as proofs that certificates were valid.
const Keys aboutTheDocument = {"/DSS", "/Extensions", "/Metadata"};
// Of a field and what is seen of it: its value, and what comes with a value.
const Keys filled = {"/AP", "/AS", "/F", "/Ff", "/I", "/M", "/RV", "/V"};

// Flags, or nothing where they are something else.
std::optional<long long> flagsOf(QPDFObjectHandle dictionary, const char* key)
{
    QPDFObjectHandle value = dictionary.getKey(key);
    if (value.isInteger())
        return value.getIntValue();
    return value.isNull() ? std::optional(0LL) : std::nullopt;
}

bool isOnlySet(const QPDFObjectHandle& before, const QPDFObjectHandle& after, const char* key, long long bits)
{
    const std::optional<long long> old = flagsOf(before, key);
    const std::optional<long long> now = flagsOf(after, key);
    return old && now && ((*now ^ *old) & ~bits) == 0 && (*old & ~*now) == 0;
}

bool isWidget(QPDFObjectHandle annotation)
{
    return annotation.isDictionary() && annotation.getKey("/Subtype").isNameAndEquals("/Widget");
}

bool isSignature(QPDFObjectHandle value)
{
    return value.isDictionary() && value.hasKey("/Contents");
}

std::vector<QPDFObjectHandle> itemsOf(QPDFObjectHandle array)
{
    return array.isArray() ? array.getArrayAsVector() : std::vector<QPDFObjectHandle>();
}

Link linkBy(const std::string& key, Link from)
{
    static const std::map<std::string_view, Link> links = {
        {"/AP", Link::Drawn},        {"/DR", Link::Drawn},      {"/MK", Link::Drawn},
        {"/Resources", Link::Drawn}, {"/P", Link::Page},        {"/Pg", Link::Page},
        {"/Kids", Link::Kid},        {"/Parent", Link::Parent}, {"/Annots", Link::Part},
        {"/CO", Link::Part},         {"/Fields", Link::Part},   {"/Obj", Link::Part},
        {"/T", Link::Part},          {"/Data", Link::Catalog},
    };
    if (from == Link::Drawn)
        return from;
    const auto found = links.find(key);
    return found == links.end() ? Link::Plain : found->second;
}

// A destination begins with its page.
Link linkByItem(QPDFObjectHandle array, int index, Link from)
{
    const bool isDestination =
        index == 0 && array.getArrayNItems() > 1 && array.getArrayItem(1).isName() && from != Link::Drawn;
    return isDestination ? Link::Page : from;
}

// What stands in the same place, before and after.
struct Pair
{
    QPDFObjectHandle one;
    QPDFObjectHandle other;
    Link link;
    QPDFObjGen owner; // the object of the dictionary that this is in
};

// Of objects of both revisions, with all that they refer to.
class Sameness
{
public:
    Sameness() = default;
    Sameness(const Sameness&) = delete;
    Sameness& operator=(const Sameness&) = delete;
    virtual ~Sameness() = default;

    bool haveSame(QPDFObjectHandle before, QPDFObjectHandle after, const Keys& apart)
    {
        if (!before.isDictionary() || !after.isDictionary())
            return false;
        std::set<std::string> keys = before.getKeys();
        keys.merge(after.getKeys());
        return std::all_of(keys.begin(), keys.end(), [&](const std::string& key) {
            return apart.contains(key) || haveSameValue(before, after, key);
        });
    }

    bool haveSameValue(QPDFObjectHandle before, QPDFObjectHandle after, const std::string& key)
    {
        return areSame({before.getKey(key), after.getKey(key), linkBy(key, Link::Plain), before.getObjGen()});
    }

    // Not by recursion: lists may be as long as the document.
    bool areSame(const Pair& first)
    {
        std::vector<Pair> pairs = {first};
        while (!pairs.empty()) {
            Pair pair = std::move(pairs.back());
            pairs.pop_back();
            auto& [one, other, link, owner] = pair;
            if (++m_compared > mostCompared)
                throw Refusal{trText("Sign", "there is too much to compare")};
            if (one.isIndirect()) {
                if (isComparedApart(pair)) {
                    if (one.getObjGen() != other.getObjGen())
                        return false;
                    continue;
                }
                // Of the links to anything but a list, one alone changes what is inside.
                const Link from = one.isArray() || link == Link::Drawn ? link : Link::Plain;
                if (other.isIndirect() && !m_seen.emplace(one.getObjGen(), other.getObjGen(), from).second)
                    continue;
            }
            if (one.getTypeCode() != other.getTypeCode())
                return false;
            if (one.isStream()) {
                if (!haveSameData(one, other))
                    return false;
                one = one.getDict();
                other = other.getDict();
            }
            if (one.isArray()) {
                if (one.getArrayNItems() != other.getArrayNItems())
                    return false;
                for (int index = 0; index < one.getArrayNItems(); ++index)
                    pairs.push_back({one.getArrayItem(index), other.getArrayItem(index),
                                     linkByItem(one, index, link), owner});
            } else if (one.isDictionary()) {
                const std::set<std::string> keys = one.getKeys();
                if (keys != other.getKeys())
                    return false;
                if (one.isIndirect())
                    owner = one.getObjGen();
                for (const std::string& key : keys)
                    pairs.push_back({one.getKey(key), other.getKey(key), linkBy(key, link), owner});
            } else if (one.unparseResolved() != other.unparseResolved())
                return false;
        }
        return true;
    }

private:
    // What is left out here.
    virtual bool isComparedApart(const Pair&) const { return false; }

    // The dictionaries, with the lengths, are compared as well.
    static bool haveSameData(QPDFObjectHandle one, QPDFObjectHandle other)
    {
        if (one.getParsedOffset() > 0 && one.getParsedOffset() == other.getParsedOffset())
            return true; // the same bytes of the same file, which is encrypted alike
        const std::shared_ptr<Buffer> before = one.getRawStreamData();
        const std::shared_ptr<Buffer> after = other.getRawStreamData();
        return before->getSize() == after->getSize() &&
               std::memcmp(before->getBuffer(), after->getBuffer(), before->getSize()) == 0;
    }

    // That are the same or will have been found not to be.
    std::set<std::tuple<QPDFObjGen, QPDFObjGen, Link>> m_seen;
    std::size_t m_compared = 0;
};

class Comparison : private Sameness
{
public:
    Comparison(Document& before, Document& after, const Limits& limits)
        : m_before(before), m_after(after), m_limits(limits), m_fields(before.fields())
    {
        for (int number = 1; number <= before.pageCount(); ++number)
            m_pages.insert(before.page(number).object.getObjGen());
        for (const FormField& field : m_fields)
            m_parts.insert(field.object.getObjGen());
        // What has kids and is no field is above fields, whatever its kids name as their parent. No loops:
        // the fields were read this way.
        std::vector<QPDFObjectHandle> rest = itemsOf(before.form().getKeyIfDict("/Fields"));
        while (!rest.empty()) {
            QPDFObjectHandle node = rest.back();
            rest.pop_back();
            if (m_parts.contains(node.getObjGen()))
                continue;
            m_nodes.push_back(node);
            for (const QPDFObjectHandle& kid : itemsOf(node.getKey("/Kids"))) {
                m_above.emplace(kid.getObjGen(), node);
                rest.push_back(kid);
            }
        }
        for (const QPDFObjectHandle& node : m_nodes)
            m_parts.insert(node.getObjGen());
        for (const FormField& field : m_fields)
            for (const QPDFObjectHandle& widget : field.widgets)
                if (widget.isIndirect() && QPDFObjectHandle(widget).isDictionary() &&
                    m_parts.insert(widget.getObjGen()).second)
                    m_above.emplace(widget.getObjGen(), field.object);
    }

    // For a certifying signature.
    void compareDocuments()
    {
        compareCatalogs();
        compareForms();
        for (const QPDFObjectHandle& node : m_nodes)
            demand(haveSame(node, later(node), {}), trText("Sign", "the form was changed"));
        for (const FormField& field : m_fields)
            compareFields(field);
        if (m_before.pageCount() != m_after.pageCount())
            throw Forbidden{trText("Sign", "pages were added or removed")};
        for (int number = 1; number <= m_before.pageCount(); ++number)
            comparePages(number);
    }

    // For one that locks fields and nothing else.
    void compareLockedFields()
    {
        const Shown shownBefore = shownOn(m_before);
        const Shown shownAfter = shownOn(m_after);
        std::map<QPDFObjGen, std::string> names;
        std::set<QPDFObjGen> compared; // of the nodes
        for (const FormField& field : m_after.fields())
            names.emplace(field.object.getObjGen(), field.name);
        for (const FormField& field : m_fields) {
            if (!m_limits.locksField(field.name))
                continue;
            const auto name = names.find(field.object.getObjGen());
            demandSame(field, name != names.end() && name->second == field.name);
            compareFields(field);
            for (auto above = m_above.find(field.object.getObjGen());
                 above != m_above.end() && compared.insert(above->second.getObjGen()).second;
                 above = m_above.find(above->second.getObjGen()))
                demandSame(field, haveSame(above->second, later(above->second), {"/Kids"}));
            for (const QPDFObjectHandle& widget : field.widgets) {
                const auto before = shownBefore.find(widget.getObjGen());
                const auto after = shownAfter.find(widget.getObjGen());
                demandSame(field, before == shownBefore.end() ||
                                      (after != shownAfter.end() && after->second == before->second));
            }
        }
    }

private:
    using Shown = std::map<QPDFObjGen, QPDFObjGen>; // the page that shows an annotation

    static void demand(bool isSo, const std::string& change)
    {
        if (!isSo)
            throw Forbidden{change};
    }
    static void demandSame(const FormField& field, bool isSo)
    {
        demand(isSo, ::filled(trText("Sign", "the field %1 was changed"), {field.name}));
    }
    bool allowsAnnotations() const { return m_limits.certified == 3; }
    QPDFObjectHandle later(const QPDFObjectHandle& object)
    {
        return m_after.file().getObject(object.getObjGen());
    }

    static Shown shownOn(Document& document)
    {
        Shown shown;
        for (int number = 1; number <= document.pageCount(); ++number) {
            QPDFObjectHandle page = document.page(number).object;
            for (const QPDFObjectHandle& annotation : itemsOf(page.getKey("/Annots")))
                shown.emplace(annotation.getObjGen(), page.getObjGen());
        }
        return shown;
    }

    void compareCatalogs()
    {
        QPDFObjectHandle before = m_before.catalog();
        QPDFObjectHandle after = m_after.catalog();
        Keys apart = aboutTheDocument;
        apart.insert("/AcroForm");
        demand(before.getObjGen() == after.getObjGen() && haveSame(before, after, apart),
               trText("Sign", "what holds for all of the document was changed"));
    }

    void compareForms()
    {
        QPDFObjectHandle before = m_before.form();
        QPDFObjectHandle after = m_after.form();
        const std::string change = trText("Sign", "the form was changed");
        demand(before.isDictionary() && after.isDictionary(), change);
        demand(haveSame(before, after, {"/Fields", "/NeedAppearances", "/SigFlags"}), change);
        const auto drawsAnew = [](QPDFObjectHandle form) {
            QPDFObjectHandle value = form.getKey("/NeedAppearances");
            return value.isBool() && value.getBoolValue();
        };
        demand(!drawsAnew(after) || drawsAnew(before), change);
        const std::vector<QPDFObjectHandle> old = itemsOf(before.getKey("/Fields"));
        const std::vector<QPDFObjectHandle> now = itemsOf(after.getKey("/Fields"));
        auto next = old.begin();
        for (const QPDFObjectHandle& field : now) {
            if (next != old.end() && next->getObjGen() == field.getObjGen())
                ++next;
            else
                takeNewField(field);
        }
        demand(next == old.end(), trText("Sign", "fields were removed"));
    }

    // Signed. It need not be seen on a page.
    void takeNewField(QPDFObjectHandle field)
    {
        demand(allowsAnnotations() && field.isIndirect() && field.isDictionary() &&
                   !m_parts.contains(field.getObjGen()) && !m_pages.contains(field.getObjGen()) &&
                   field.getKey("/FT").isNameAndEquals("/Sig") && isSignature(field.getKey("/V")) &&
                   !field.hasKey("/Kids") && !field.hasKey("/Parent"),
               trText("Sign", "fields were added"));
        m_added.insert(field.getObjGen());
    }

    void compareFields(const FormField& field)
    {
        QPDFObjectHandle before = field.object;
        const bool isSigned = field.type == "/Sig" && before.getKey("/V").isDictionary();
        // Nothing but a signature fills the place of one.
        const bool staysEmpty = field.type == "/Sig" && !isSignature(later(before).getKeyIfDict("/V"));
        const bool isFree =
            m_limits.certified && !isSigned && !staysEmpty && !m_limits.locksField(field.name);
        std::vector<QPDFObjectHandle> parts = field.widgets;
        parts.push_back(before);
        for (QPDFObjectHandle& part : parts) {
            if (!part.isIndirect())
                continue; // a part of what is compared
            QPDFObjectHandle now = later(part);
            // An annotation of another kind does not show the field's value.
            const bool isFilled =
                isFree && (allowsAnnotations() || isWidget(part) || part.getKeyIfDict("/Subtype").isNull());
            demandSame(field, haveSame(part, now, isFilled ? filled : Keys()));
            if (!isFilled)
                continue;
            constexpr long long printedAndLocked = 4 + 128;
            constexpr long long readOnly = 1;
            for (const auto& [key, bits] : {std::pair("/F", printedAndLocked), std::pair("/Ff", readOnly)})
                demandSame(field, isOnlySet(part, now, key, bits) || haveSameValue(part, now, key));
            // It tells how each state looks.
            demandSame(field, field.type != "/Btn" || haveSameValue(part, now, "/AP"));
        }
    }

    void comparePages(int number)
    {
        QPDFObjectHandle before = m_before.page(number).object;
        QPDFObjectHandle after = m_after.page(number).object;
        const std::string change = ::filled(trText("Sign", "page %1 was changed"), {std::to_string(number)});
        demand(before.getObjGen() == after.getObjGen() && haveSame(before, after, {"/Annots"}), change);
        const auto isList = [](QPDFObjectHandle value) { return value.isNull() || value.isArray(); };
        const bool areLists = isList(before.getKey("/Annots")) && isList(after.getKey("/Annots"));
        std::vector<QPDFObjectHandle> old = itemsOf(before.getKey("/Annots"));
        std::vector<QPDFObjectHandle> now = itemsOf(after.getKey("/Annots"));
        if (allowsAnnotations()) {
            std::erase_if(old, [](const QPDFObjectHandle& annotation) { return !isWidget(annotation); });
            std::erase_if(now, [this](const QPDFObjectHandle& annotation) {
                return !isWidget(annotation) || m_added.contains(annotation.getObjGen());
            });
        }
        const QPDFObjGen page = before.getObjGen();
        demand((areLists || haveSameValue(before, after, "/Annots")) && old.size() == now.size() &&
                   std::equal(old.begin(), old.end(), now.begin(),
                              [&](const auto& one, const auto& other) {
                                  return areSame({one, other, Link::Part, page});
                              }),
               ::filled(trText("Sign", "what lies on page %1 was changed"), {std::to_string(number)}));
    }

    // By itself, but for what may differ, and only where the link says so: what a page draws may be a field's
    // value, for instance.
    bool isComparedApart(const Pair& pair) const override
    {
        const QPDFObjGen object = pair.one.getObjGen();
        switch (pair.link) {
        case Link::Page:
            return m_pages.contains(object);
        case Link::Kid:
            return m_pages.contains(object) || m_parts.contains(object);
        case Link::Parent: {
            const auto above = m_above.find(pair.owner);
            return above != m_above.end() && above->second.getObjGen() == object;
        }
        case Link::Part:
            return m_parts.contains(object);
        case Link::Catalog:
            return object == m_before.catalog().getObjGen();
        case Link::Plain:
        case Link::Drawn:
            break;
        }
        return false;
    }

    Document& m_before;
    Document& m_after;
    const Limits& m_limits;
    const std::vector<FormField> m_fields; // before
    std::vector<QPDFObjectHandle> m_nodes; // above them
    std::set<QPDFObjGen> m_pages;
    std::set<QPDFObjGen> m_parts;                   // of the form: fields, widgets, nodes
    std::map<QPDFObjGen, QPDFObjectHandle> m_above; // what has the field, node or widget among its kids
    std::set<QPDFObjGen> m_added;                   // fields
};

// Part of the key; null where there is none.
QPDFObjectHandle lastingIdentifier(QPDFObjectHandle trailer)
{
    QPDFObjectHandle identifier = trailer.getKey("/ID");
    return identifier.isArray() && identifier.getArrayNItems() > 0 ? identifier.getArrayItem(0)
                                                                   : QPDFObjectHandle::newNull();
}

} // namespace

bool areEncryptedAlike(Document& before, Document& after)
{
    QPDFObjectHandle one = before.file().getTrailer();
    QPDFObjectHandle other = after.file().getTrailer();
    if (one.getKey("/Encrypt").isNull() && other.getKey("/Encrypt").isNull())
        return true;
    Sameness sameness;
    return sameness.haveSameValue(one, other, "/Encrypt") &&
           sameness.areSame({lastingIdentifier(one), lastingIdentifier(other), Link::Plain, {}});
}

std::optional<std::string> forbiddenChange(Document& before, Document& after, const Limits& limits)
{
    if (!limits.areAny())
        return std::nullopt;
    if (limits.certified == 1)
        return trText("Sign", "the document was changed");
    try {
        Comparison comparison(before, after, limits);
        if (limits.certified)
            comparison.compareDocuments();
        else
            comparison.compareLockedFields();
    } catch (const Forbidden& forbidden) {
        return forbidden.change;
    }
    before.refuseDamage();
    after.refuseDamage();
    return std::nullopt;
}

} // namespace sign
