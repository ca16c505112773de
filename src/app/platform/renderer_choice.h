#pragma once

namespace lectern {

// GTK draws windows with OpenGL by default. Where OpenGL is only Mesa's
// software rasteriser (virtual machines, servers, Xvfb, machines without a
// GPU driver), that is several times slower than GTK's Cairo renderer: a
// slide change misses the frame. Picks the Cairo renderer there, unless the
// user chose a renderer with GSK_RENDERER. Call once GTK has a display and
// before the first window appears.
void chooseRenderer();

}  // namespace lectern
