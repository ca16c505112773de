#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>

namespace lectern {

// Why the web engine's page process stopped while loading `url`: the
// engine stops it, for one, when a site redirects a page to a local file,
// and tells nothing more. Follows the address's redirects (at most five)
// with plain requests of its own, without the page's cookies, and calls
// `done` once on the main loop: the refusal of the first address that no
// page may show, or a general line when there is none. Nothing is called
// once `cancellable` is cancelled.
void findStoppedLoadReason(const std::string& url, GCancellable* cancellable,
                           std::function<void(const std::string&)> done);

}  // namespace lectern
