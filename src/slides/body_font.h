#pragma once

#include "model/attributed_text.h"

namespace lectern {

// The fonts a body is drawn with. Runs never carry a font of their own: the
// theme supplies the body font, and each run is drawn with one of its four
// members or with the monospaced body font, so sizes and families always come
// from the theme alone.
enum class BodyFont { regular, bold, italic, boldItalic, monospaced };

// The font a run with these attributes is drawn with. A command paragraph is
// monospaced whatever its emphasis (code stays code even when typed in bold);
// any other run is chosen by its bold and italic intent bits.
BodyFont bodyFontFor(const SlideBodyAttributes& attributes);

}  // namespace lectern
