#include "app/platform/app_style.h"

namespace lectern {

const char* const appStyleSheet = R"css(
/* The stage alone: nothing but the slide on a dark ground. */
window.deck-window.stage-only,
window.deck-window.stage-only .overview {
  background-color: #1b1b1d;
  color: white;
}

/* Without a compositor GTK frames every window from the inside; a window
   that fills its monitor (the stage, a full-screen presenter display)
   keeps every pixel for its content. */
window.solid-csd.fullscreen,
window.deck-window.stage-only.solid-csd {
  padding: 0;
  box-shadow: none;
}

.slide-counter {
  margin-left: 6px;
  margin-right: 6px;
}

/* Presenter notes under the editor's stage. */
.notes-pane {
  padding: 12px 24px 12px 24px;
  border-top: 1px solid alpha(currentColor, 0.15);
  background-color: @view_bg_color;
}
.notes-text {
  font-size: 1.1em;
}

/* The HUD at the bottom of the stage. */
.hud {
  border-radius: 18px;
  padding: 6px 10px;
  border-spacing: 8px;
}
.hud separator {
  margin: 6px 2px;
  background-color: alpha(white, 0.25);
}
.hud-counter {
  margin: 0 6px;
  font-weight: bold;
}
.hud-notice {
  margin: 0 6px;
  opacity: 0.85;
}

/* Timer readouts: stopped, running, two minutes left, overtime. */
.timer-readout label {
  font-weight: bold;
}
.timer-readout.large label {
  font-size: 1.6em;
}
.timer-readout.timer-stopped label {
  opacity: 0.55;
}
.timer-readout.timer-warning label {
  color: @warning_color;
}
.timer-readout.timer-overtime label {
  color: @error_color;
}
.hud .timer-readout.timer-warning label {
  color: #f8e45c;
}
.hud .timer-readout.timer-overtime label {
  color: #ff7b63;
}

/* Overview tiles. */
.overview flowboxchild.overview-tile {
  padding: 8px;
  border-radius: 12px;
}
.overview flowboxchild.overview-tile .tile-picture {
  border-radius: 6px;
  box-shadow: 0 1px 4px alpha(black, 0.25);
}
.overview flowboxchild.overview-tile.current .tile-picture {
  box-shadow: 0 0 0 3px @accent_bg_color;
}
.overview flowboxchild.overview-tile.skipped .tile-picture {
  opacity: 0.6;
}
.tile-number {
  font-weight: bold;
  opacity: 0.6;
}
.live-badge {
  background-color: #e01b24;
  color: white;
  font-size: 0.75em;
  font-weight: 800;
  letter-spacing: 1px;
  padding: 2px 7px;
  border-radius: 5px;
}
.skipped-mark {
  background-color: alpha(black, 0.65);
  color: white;
  padding: 4px;
  border-radius: 999px;
}

/* The presenter panel. */
.presenter-panel .slide-thumbnail {
  border-radius: 6px;
  box-shadow: 0 0 0 1px alpha(black, 0.10), 0 1px 3px alpha(black, 0.18);
}
.panel-notes {
  padding: 10px 12px;
}
.presenter-time {
  font-weight: bold;
}
)css";

}  // namespace lectern
