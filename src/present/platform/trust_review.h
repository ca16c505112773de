#pragma once

#include <glib/gi18n.h>

#include <adwaita.h>
#include <gtkmm.h>

#include <functional>
#include <vector>

#include "base/platform/gobject_ref.h"
#include "present/action_trust.h"

namespace lectern {

// The sheet that asks before the demo actions of a deck made elsewhere may
// run: what they are, "Allow Actions" or "Present Without Them". Closing it
// any other way (Escape) counts as presenting without them.
class TrustReview {
public:
    static constexpr const char* title = N_("Allow this deck's demo actions?");
    static constexpr const char* text =
        N_("They act with the sign-ins of this deck's web pages and browser profiles. "
           "Allow them only if you trust whoever made the deck.");
    static constexpr const char* allowResponse = "allow";
    static constexpr const char* declineResponse = "decline";

    TrustReview() = default;
    ~TrustReview() { close(); }
    TrustReview(const TrustReview&) = delete;
    TrustReview& operator=(const TrustReview&) = delete;

    // Shows the sheet over `parent` with the requests listed, or updates the
    // list of the sheet already shown. The answer comes once, after the
    // sheet has gone.
    void show(Gtk::Window& parent, const std::vector<ActionTrust::Request>& requests, std::function<void()> allow,
              std::function<void()> decline);
    // Takes the sheet away without an answer.
    void close();

    AdwMessageDialog* dialog() const { return dialog_.get(); }

private:
    void setRequests(const std::vector<ActionTrust::Request>& requests);

    GObjectRef<AdwMessageDialog> dialog_;
    Gtk::ListBox* list_ = nullptr;
    SignalConnection response_;
};

}  // namespace lectern
