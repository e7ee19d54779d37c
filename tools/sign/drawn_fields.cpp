#include "drawn_fields.h"

#include "page_text.h"
#include "refusal.h"
#include "texts.h"

namespace sign {

namespace {

std::string filledIn(const QPDFObjectHandle& field)
{
    QPDFObjectHandle value = inheritedValue(field, "/V");
    return value.isString() ? lettersOf(value.getUTF8Value()) : std::string();
}

bool isDrawn(const FormField& field, QPDFObjectHandle widget, Fonts& fonts)
{
    QPDFObjectHandle drawn = widget.getKeyIfDict("/AP").getKeyIfDict("/N");
    if (field.type != "/Tx" && field.type != "/Ch") // a button has a drawing for each state
        return drawn.isStream() || drawn.isDictionary();
    const std::string text = filledIn(field.object);
    return drawn.isStream() ? textOfForm(drawn, fonts) == text : text.empty();
}

} // namespace

bool needsDrawnFields(Document& document)
{
    QPDFObjectHandle isAsked = document.form().getKeyIfDict("/NeedAppearances");
    if (!isAsked.isBool() || !isAsked.getBoolValue())
        return false;
    Fonts fonts;
    for (const FormField& field : document.fields())
        for (const QPDFObjectHandle& widget : field.widgets)
            if (field.type != "/Sig" && !isDrawn(field, widget, fonts))
                throw Refusal{filled(
                    trText("Sign",
                           "the field %1 is not drawn as it is filled, which the form leaves to readers"),
                    {field.name})};
    document.refuseDamage();
    return true;
}

} // namespace sign
