// Forms that leave it to readers to draw their fields.
#pragma once

#include "document.h"

namespace sign {

// Such readers would draw a signature anew, too, without its ink. So they have to be told not to, which is
// right where all fields are drawn as they are filled. True when they are to be told. Throws Refusal where a
// field is not drawn as it is filled.
bool needsDrawnFields(Document& document);

} // namespace sign
