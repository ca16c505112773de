#include "slides/body_font.h"

namespace lectern {

BodyFont bodyFontFor(const SlideBodyAttributes& attributes) {
    if (attributes.isCommand()) return BodyFont::monospaced;
    if (attributes.isBold()) return attributes.isItalic() ? BodyFont::boldItalic : BodyFont::bold;
    return attributes.isItalic() ? BodyFont::italic : BodyFont::regular;
}

}  // namespace lectern
