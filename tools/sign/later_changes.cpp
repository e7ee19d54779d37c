#include "later_changes.h"

#include "refusal.h"
#include "texts.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string_view>
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

std::vector<QPDFObjectHandle> itemsOf(QPDFObjectHandle array)
{
    return array.isArray() ? array.getArrayAsVector() : std::vector<QPDFObjectHandle>();
}

class Comparison
{
public:
    Comparison(Document& before, Document& after, const Limits& limits)
        : m_before(before), m_after(after), m_limits(limits), m_fields(before.fields())
    {
        m_known.insert(before.catalog().getObjGen());
        for (int number = 1; number <= before.pageCount(); ++number)
            m_known.insert(before.page(number).object.getObjGen());
        for (const FormField& field : m_fields) {
            for (const QPDFObjectHandle& widget : field.widgets)
                if (widget.isIndirect())
                    m_known.insert(widget.getObjGen());
            for (QPDFObjectHandle node = field.object;
                 node.isIndirect() && m_known.insert(node.getObjGen()).second && node.isDictionary();
                 node = node.getKey("/Parent"))
                m_nodes.push_back(node);
        }
    }

    // For a certifying signature.
    void compareDocuments()
    {
        compareCatalogs();
        compareForms();
        for (QPDFObjectHandle& node : m_nodes)
            if (std::none_of(m_fields.begin(), m_fields.end(), [&](const FormField& field) {
                    return field.object.getObjGen() == node.getObjGen();
                }))
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
        for (const FormField& field : m_after.fields())
            names.emplace(field.object.getObjGen(), field.name);
        for (const FormField& field : m_fields) {
            if (!m_limits.locksField(field.name))
                continue;
            const auto name = names.find(field.object.getObjGen());
            demandSame(field, name != names.end() && name->second == field.name);
            compareFields(field);
            for (QPDFObjectHandle node = QPDFObjectHandle(field.object).getKey("/Parent");
                 node.isDictionary() && m_known.contains(node.getObjGen()); node = node.getKey("/Parent"))
                demandSame(field, haveSame(node, later(node), {"/Kids"}));
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

    // To be signed, and seen on a page.
    void takeNewField(QPDFObjectHandle field)
    {
        demand(allowsAnnotations() && field.isIndirect() && field.isDictionary() &&
                   !m_known.contains(field.getObjGen()) && field.getKey("/FT").isNameAndEquals("/Sig") &&
                   !field.hasKey("/Kids") && !field.hasKey("/Parent"),
               trText("Sign", "fields were added"));
        m_added.insert(field.getObjGen());
    }

    void compareFields(const FormField& field)
    {
        QPDFObjectHandle before = field.object;
        const bool isSigned = field.type == "/Sig" && before.getKey("/V").isDictionary();
        const bool isFree = m_limits.certified && !isSigned && !m_limits.locksField(field.name);
        const Keys apart = isFree ? filled : Keys();
        std::vector<QPDFObjectHandle> parts = field.widgets;
        parts.push_back(before);
        for (QPDFObjectHandle& part : parts) {
            if (!part.isIndirect())
                continue; // a part of what is compared
            QPDFObjectHandle now = later(part);
            demandSame(field, part.isDictionary() && now.isDictionary() && haveSame(part, now, apart));
            if (!isFree)
                continue;
            constexpr long long printedAndLocked = 4 + 128;
            constexpr long long readOnly = 1;
            for (const auto& [key, bits] : {std::pair("/F", printedAndLocked), std::pair("/Ff", readOnly)})
                demandSame(field,
                           isOnlySet(part, now, key, bits) || areSame(part.getKey(key), now.getKey(key)));
            // It tells how each state looks.
            demandSame(field, field.type != "/Btn" || areSame(part.getKey("/AP"), now.getKey("/AP")));
        }
    }

    void comparePages(int number)
    {
        QPDFObjectHandle before = m_before.page(number).object;
        QPDFObjectHandle after = m_after.page(number).object;
        const std::string change = ::filled(trText("Sign", "page %1 was changed"), {std::to_string(number)});
        demand(before.getObjGen() == after.getObjGen() && haveSame(before, after, {"/Annots"}), change);
        std::vector<QPDFObjectHandle> old = itemsOf(before.getKey("/Annots"));
        std::vector<QPDFObjectHandle> now = itemsOf(after.getKey("/Annots"));
        if (allowsAnnotations()) {
            std::erase_if(old, [](const QPDFObjectHandle& annotation) { return !isWidget(annotation); });
            std::erase_if(now, [this](const QPDFObjectHandle& annotation) {
                return !isWidget(annotation) || m_added.contains(annotation.getObjGen());
            });
        }
        demand(old.size() == now.size() &&
                   std::equal(old.begin(), old.end(), now.begin(),
                              [this](const auto& one, const auto& other) { return areSame(one, other); }),
               ::filled(trText("Sign", "what lies on page %1 was changed"), {std::to_string(number)}));
    }

    bool haveSame(QPDFObjectHandle before, QPDFObjectHandle after, const Keys& apart)
    {
        if (!before.isDictionary() || !after.isDictionary())
            return false;
        std::set<std::string> keys = before.getKeys();
        keys.merge(after.getKeys());
        return std::all_of(keys.begin(), keys.end(), [&](const std::string& key) {
            return apart.contains(key) || areSame(before.getKey(key), after.getKey(key));
        });
    }

    // With all that they refer to, but for what is known: that is compared by itself. Not by recursion: lists
    // may be as long as the document.
    bool areSame(const QPDFObjectHandle& before, const QPDFObjectHandle& after)
    {
        std::vector<std::pair<QPDFObjectHandle, QPDFObjectHandle>> pairs = {{before, after}};
        while (!pairs.empty()) {
            auto [one, other] = std::move(pairs.back());
            pairs.pop_back();
            if (++m_compared > mostCompared)
                throw Forbidden{trText("Sign", "so much was there already that the changes are not judged")};
            if (one.isIndirect()) {
                if (m_known.contains(one.getObjGen())) {
                    if (one.getObjGen() != other.getObjGen())
                        return false;
                    continue;
                }
                if (other.isIndirect() && !m_seen.emplace(one.getObjGen(), other.getObjGen()).second)
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
                    pairs.emplace_back(one.getArrayItem(index), other.getArrayItem(index));
            } else if (one.isDictionary()) {
                const std::set<std::string> keys = one.getKeys();
                if (keys != other.getKeys())
                    return false;
                for (const std::string& key : keys)
                    pairs.emplace_back(one.getKey(key), other.getKey(key));
            } else if (one.unparseResolved() != other.unparseResolved())
                return false;
        }
        return true;
    }

    // The dictionaries, with the lengths, are compared as well.
    static bool haveSameData(QPDFObjectHandle one, QPDFObjectHandle other)
    {
        if (one.getParsedOffset() > 0 && one.getParsedOffset() == other.getParsedOffset())
            return true; // the same bytes of the same file
        const std::shared_ptr<Buffer> before = one.getRawStreamData();
        const std::shared_ptr<Buffer> after = other.getRawStreamData();
        return before->getSize() == after->getSize() &&
               std::memcmp(before->getBuffer(), after->getBuffer(), before->getSize()) == 0;
    }

    Document& m_before;
    Document& m_after;
    const Limits& m_limits;
    const std::vector<FormField> m_fields;              // before
    std::vector<QPDFObjectHandle> m_nodes;              // these fields and those above them
    std::set<QPDFObjGen> m_known;                       // these, their widgets, the pages, the catalog
    std::set<QPDFObjGen> m_added;                       // fields
    std::set<std::pair<QPDFObjGen, QPDFObjGen>> m_seen; // that are the same or will have been found not to be
    std::size_t m_compared = 0;
};

} // namespace

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
