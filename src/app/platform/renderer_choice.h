#pragma once

namespace lectern {

// GTK draws windows with OpenGL by default, and the web engine composites
// pages with it. Where OpenGL is only Mesa's software rasteriser (virtual
// machines, servers, Xvfb, machines without a GPU driver), both are several
// times slower than drawing with Cairo: slide changes and pages miss frames.
// There this picks GTK's Cairo renderer (unless the user chose one with
// GSK_RENDERER) and returns false: pages should be drawn without hardware
// acceleration. Call once GTK has a display, before the first window.
bool chooseRenderer();

}  // namespace lectern
