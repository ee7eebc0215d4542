#include "toolkit/Fonts.h"

#include <pango/pangocairo.h>

namespace vantro {

void BeginToListFonts()
{
    (void)pango_cairo_font_map_get_default();
}

} // namespace vantro
