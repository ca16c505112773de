#include "web/platform/webkit_page.h"

#include <glib/gi18n.h>

#include <initializer_list>
#include <string_view>

#include "model/deck_json.h"
#include "web/platform/stopped_load_reason.h"
#include "web/refused_address.h"
#include "web/platform/web_sessions.h"

namespace lectern {

namespace {

// A load that has not finished after this long fails as timed out.
constexpr guint loadTimeoutSeconds = 60;

bool hasScheme(std::string_view uri, std::initializer_list<std::string_view> schemes) {
    auto colon = uri.find(':');
    if (colon == std::string_view::npos) return false;
    std::string_view scheme = uri.substr(0, colon);
    for (std::string_view wanted : schemes) {
        if (g_ascii_strncasecmp(scheme.data(), wanted.data(), wanted.size()) == 0 && scheme.size() == wanted.size()) {
            return true;
        }
    }
    return false;
}

// Why the engine rejected a server certificate, worst first: a certificate
// for another site before one that is merely self-signed.
std::string certificateReason(GTlsCertificateFlags errors) {
    if (errors & G_TLS_CERTIFICATE_BAD_IDENTITY) return _("The certificate is for another host.");
    if (errors & G_TLS_CERTIFICATE_REVOKED) return _("The certificate has been revoked.");
    if (errors & G_TLS_CERTIFICATE_EXPIRED) return _("The certificate has expired.");
    if (errors & G_TLS_CERTIFICATE_NOT_ACTIVATED) return _("The certificate is not valid yet.");
    if (errors & G_TLS_CERTIFICATE_INSECURE) return _("The certificate uses an insecure algorithm.");
    if (errors & G_TLS_CERTIFICATE_UNKNOWN_CA) return _("The certificate is self-signed or from an unknown authority.");
    return _("The certificate is not valid.");
}

// The host, port and certificate of a page the engine refused over TLS.
std::optional<HostCertificate> rejectedCertificate(const char* uri, GTlsCertificate* certificate) {
    if (!uri || !certificate) return std::nullopt;
    GUri* parsed = g_uri_parse(uri, G_URI_FLAGS_NONE, nullptr);
    if (!parsed) return std::nullopt;
    HostCertificate rejected;
    rejected.host = g_uri_get_host(parsed) ? g_uri_get_host(parsed) : "";
    rejected.port = g_uri_get_port(parsed) > 0 ? g_uri_get_port(parsed) : 443;
    g_uri_unref(parsed);
    char* pem = nullptr;
    g_object_get(certificate, "certificate-pem", &pem, nullptr);
    if (pem) rejected.pem = pem;
    g_free(pem);
    if (rejected.host.empty() || rejected.pem.empty()) return std::nullopt;
    return rejected;
}

struct ScriptCall {
    std::function<void(Result<std::optional<std::string>>)> done;
};

struct SnapshotCall {
    std::function<void(std::optional<std::string>)> done;
    GdkTexture* pixels = nullptr;  // a copy in memory, safe on any thread
    std::optional<std::string> png;
    ~SnapshotCall() {
        if (pixels) g_object_unref(pixels);
    }
};

// A texture the engine drew may live on the graphics card: its pixels are
// copied out here, on the main thread.
GdkTexture* memoryCopy(GdkTexture* texture) {
    const int width = gdk_texture_get_width(texture), height = gdk_texture_get_height(texture);
    if (width <= 0 || height <= 0) return nullptr;
    const gsize stride = static_cast<gsize>(width) * 4;
    auto* data = static_cast<guchar*>(g_malloc(stride * static_cast<gsize>(height)));
    gdk_texture_download(texture, data, stride);
    GBytes* bytes = g_bytes_new_take(data, stride * static_cast<gsize>(height));
    GdkTexture* copy = gdk_memory_texture_new(width, height, GDK_MEMORY_DEFAULT, bytes, stride);
    g_bytes_unref(bytes);
    return copy;
}

}  // namespace

WebKitPage::WebKitPage(WebKitNetworkSession* session, bool accelerated)
    : view_(GObjectRef<WebKitWebView>::take(
          WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session, nullptr)))),
      cancellable_(GObjectRef<GCancellable>::take(g_cancellable_new())) {
    WebKitSettings* settings = webkit_web_view_get_settings(view_.get());
    webkit_settings_set_enable_javascript(settings, TRUE);
    if (!accelerated) {
        webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    }
    gtk_widget_set_hexpand(widget(), TRUE);
    gtk_widget_set_vexpand(widget(), TRUE);

    auto connect = [this](const char* signal, GCallback handler) {
        handlers_.push_back(g_signal_connect(view_.get(), signal, handler, this));
    };
    connect("load-changed", G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, gpointer data) {
                auto* self = static_cast<WebKitPage*>(data);
                if (event == WEBKIT_LOAD_STARTED) {
                    self->lastFailed_ = false;
                    self->downloading_ = false;
                    self->armTimeout();
                }
                if (event != WEBKIT_LOAD_FINISHED) return;
                self->disarmTimeout();
                // A failed load also ends with "finished"; its failure was
                // reported already.
                if (std::exchange(self->failed_, false)) return;
                if (!DeckJson::isWebAddress(self->currentUrl())) {
                    // The engine gave up on the address without a word and
                    // shows an empty page instead: that is a failure.
                    self->fail(_("The web engine refused to load the page"));
                    return;
                }
                if (self->delegate_) self->delegate_->loadFinished();
            }));
    connect("load-failed", G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent, char*, GError* error, gpointer data) {
                auto* self = static_cast<WebKitPage*>(data);
                self->failed_ = true;
                self->disarmTimeout();
                bool cancelled = g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED);
                // A load handed to the downloads: the page shown stays.
                if (std::exchange(self->downloading_, false) &&
                    g_error_matches(error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE)) {
                    cancelled = true;
                }
                std::string message = error->message;
                if (auto refused = std::exchange(self->refusedRedirect_, std::nullopt)) {
                    // The engine calls it interrupted; the reason is ours.
                    message = *refused;
                    cancelled = false;
                }
                if (!cancelled) self->lastFailed_ = true;
                if (self->delegate_) self->delegate_->loadFailed(message, cancelled);
                // The pane shows the failure itself: no engine error page.
                return gboolean(TRUE);
            }));
    connect("load-failed-with-tls-errors",
            G_CALLBACK(+[](WebKitWebView*, char* uri, GTlsCertificate* certificate, GTlsCertificateFlags errors,
                           gpointer data) {
                auto* self = static_cast<WebKitPage*>(data);
                // Handled here, the engine reports no plain failure after
                // it; it still ends the load with "finished".
                self->failed_ = true;
                self->lastFailed_ = true;
                self->disarmTimeout();
                if (self->delegate_) {
                    if (auto rejected = rejectedCertificate(uri, certificate)) self->delegate_->certificateRejected(*rejected);
                }
                if (self->delegate_) self->delegate_->loadFailed(certificateReason(errors), false);
                return gboolean(TRUE);
            }));
    connect("web-process-terminated", G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason, gpointer data) {
                auto* self = static_cast<WebKitPage*>(data);
                if (!self->timeout_) {
                    // A page that was shown: it comes back by a reload.
                    if (self->delegate_) self->delegate_->processTerminated();
                    return;
                }
                // It stopped while the page was loading (the engine stops
                // the process, for one, when a site redirects to a local
                // file): a reload would stop it again, so the load fails,
                // with the reason once it is known.
                self->disarmTimeout();
                self->failed_ = true;
                self->lastFailed_ = true;
                findStoppedLoadReason(self->requested_, self->cancellable_.get(),
                                      [self, load = self->loads_](const std::string& reason) {
                                          if (load == self->loads_) self->fail(reason);
                                      });
            }));
    connect("create", G_CALLBACK(+[](WebKitWebView*, WebKitNavigationAction* action, gpointer data) -> GtkWidget* {
                auto* self = static_cast<WebKitPage*>(data);
                WebKitURIRequest* request = webkit_navigation_action_get_request(action);
                const char* uri = request ? webkit_uri_request_get_uri(request) : nullptr;
                if (self->delegate_ && uri && !refusalReason(uri)) self->delegate_->newWindowRequested(uri);
                // Never a second view.
                return nullptr;
            }));
    connect("authenticate", G_CALLBACK(+[](WebKitWebView*, WebKitAuthenticationRequest* request, gpointer data) {
                auto* self = static_cast<WebKitPage*>(data);
                if (!self->delegate_ || !self->delegate_->authenticationRequested()) return gboolean(FALSE);
                webkit_authentication_request_cancel(request);
                return gboolean(TRUE);
            }));
    connect("script-dialog", G_CALLBACK(+[](WebKitWebView* view, WebKitScriptDialog* dialog, gpointer) {
                // Leaving a page is never held up: the stage moves on and
                // reloads whatever the page says.
                WebKitScriptDialogType kind = webkit_script_dialog_get_dialog_type(dialog);
                if (kind == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
                    webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
                    return gboolean(TRUE);
                }
                // A page on show gets the engine's dialog, drawn inside the
                // page itself.
                if (gtk_widget_get_root(GTK_WIDGET(view))) return gboolean(FALSE);
                // A page in no window is answered at once, as a person who
                // says no would: dismissed, not confirmed, no text. Its
                // scripts, and its load, go on.
                if (kind == WEBKIT_SCRIPT_DIALOG_CONFIRM) webkit_script_dialog_confirm_set_confirmed(dialog, FALSE);
                return gboolean(TRUE);
            }));
    connect("decide-policy",
            G_CALLBACK(+[](WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type, gpointer data) {
                auto* self = static_cast<WebKitPage*>(data);
                if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
                    return gboolean(self->responseArrived(WEBKIT_RESPONSE_POLICY_DECISION(decision)));
                }
                auto* navigation = WEBKIT_NAVIGATION_POLICY_DECISION(decision);
                if (self->mayNavigate(webkit_navigation_policy_decision_get_navigation_action(navigation),
                                      type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION)) {
                    return gboolean(FALSE);
                }
                webkit_policy_decision_ignore(decision);
                return gboolean(TRUE);
            }));
}

void WebKitPage::fail(const std::string& message) {
    failed_ = true;
    lastFailed_ = true;
    if (delegate_) delegate_->loadFailed(message, false);
}

WebKitPage::~WebKitPage() {
    disarmTimeout();
    g_cancellable_cancel(cancellable_.get());
    for (gulong handler : handlers_) g_signal_handler_disconnect(view_.get(), handler);
    webkit_web_view_stop_loading(view_.get());
    // A view still in a container leaves it with its page.
    if (GtkWidget* parent = gtk_widget_get_parent(widget())) {
        if (GTK_IS_BOX(parent)) gtk_box_remove(GTK_BOX(parent), widget());
        else gtk_widget_unparent(widget());
    }
}

bool WebKitPage::responseArrived(WebKitResponsePolicyDecision* response) {
    const bool mainFrame = webkit_response_policy_decision_is_main_frame_main_resource(response);
    WebKitURIResponse* answer = webkit_response_policy_decision_get_response(response);
    // What the page cannot show is a file to keep (the engine would drop a
    // type it cannot show without a word), and so is what the site sends as
    // an attachment, from any frame.
    SoupMessageHeaders* headers = webkit_uri_response_get_http_headers(answer);
    const char* disposition = headers ? soup_message_headers_get_one(headers, "Content-Disposition") : nullptr;
    const bool attachment = disposition && g_ascii_strncasecmp(disposition, "attachment", 10) == 0;
    const bool unshowable = mainFrame && !webkit_response_policy_decision_is_mime_type_supported(response);
    if (attachment || unshowable) {
        if (gtk_widget_get_root(widget())) {
            // The page stays as it is; the load that became a download ends
            // quietly (see load-failed).
            if (mainFrame) downloading_ = true;
            webkit_policy_decision_download(WEBKIT_POLICY_DECISION(response));
        } else {
            // A page in no window downloads nothing.
            webkit_policy_decision_ignore(WEBKIT_POLICY_DECISION(response));
        }
        return true;
    }
    if (delegate_ && mainFrame) delegate_->responseReceived(static_cast<int>(webkit_uri_response_get_status_code(answer)));
    return false;  // the engine's usual decision
}

bool WebKitPage::mayNavigate(WebKitNavigationAction* action, bool newWindow) {
    WebKitURIRequest* request = webkit_navigation_action_get_request(action);
    const char* uri = request ? webkit_uri_request_get_uri(request) : nullptr;
    if (!uri) return false;
    // A new window or a redirect starts a page of its own: web addresses
    // on ports browsers allow, nothing else. Frames of a page may also hold
    // the page's own content (about:, data: and blob: addresses); nothing
    // reaches the local file system or another program's scheme.
    auto reason = refusalReason(uri);
    if (!reason) return true;
    if (!newWindow && !webkit_navigation_action_is_redirect(action) && hasScheme(uri, {"about", "data", "blob"})) {
        return true;
    }
    // A redirect refused ends the load it belongs to; the engine reports it
    // as interrupted, the owner hears why.
    if (webkit_navigation_action_is_redirect(action)) refusedRedirect_ = std::move(reason);
    return false;
}

void WebKitPage::armTimeout() {
    disarmTimeout();
    timeout_ = g_timeout_add_seconds(
        loadTimeoutSeconds,
        [](gpointer data) {
            auto* self = static_cast<WebKitPage*>(data);
            self->timeout_ = 0;
            WebPageDelegate* delegate = self->delegate_;
            // Stopping reports a cancelled load, which owners ignore; the
            // time-out is the failure they hear of.
            self->delegate_ = nullptr;
            webkit_web_view_stop_loading(self->view_.get());
            self->delegate_ = delegate;
            self->fail(_("The request timed out."));
            return G_SOURCE_REMOVE;
        },
        this);
}

void WebKitPage::disarmTimeout() {
    if (timeout_) g_source_remove(std::exchange(timeout_, 0));
}

void WebKitPage::load(const std::string& url) {
    failed_ = false;
    lastFailed_ = false;
    refusedRedirect_.reset();
    requested_ = url;
    ++loads_;
    if (auto reason = refusalReason(url)) {
        // Never tried: the owner hears at once (owners take reports at any
        // moment, a load that fails at once included).
        fail(*reason);
        failed_ = false;
        return;
    }
    webkit_web_view_load_uri(view_.get(), url.c_str());
}

void WebKitPage::stopLoading() {
    disarmTimeout();
    webkit_web_view_stop_loading(view_.get());
}

std::string WebKitPage::currentUrl() const {
    const char* uri = webkit_web_view_get_uri(view_.get());
    return uri ? uri : "";
}

bool WebKitPage::isLoading() const { return webkit_web_view_is_loading(view_.get()); }

bool WebKitPage::lastLoadFailed() const { return lastFailed_; }

double WebKitPage::zoom() const { return webkit_web_view_get_zoom_level(view_.get()); }

void WebKitPage::setZoom(double zoom) { webkit_web_view_set_zoom_level(view_.get(), zoom); }

void WebKitPage::setDelegate(WebPageDelegate* delegate) { delegate_ = delegate; }

void WebKitPage::reload() {
    // After a failure the view may not hold the address at all: it is
    // asked for anew.
    if (lastFailed_ && !requested_.empty()) load(requested_);
    else webkit_web_view_reload(view_.get());
}

void WebKitPage::snapshot(std::function<void(std::optional<std::string>)> done) {
    auto* call = new SnapshotCall{std::move(done), nullptr, std::nullopt};
    webkit_web_view_get_snapshot(
        view_.get(), WEBKIT_SNAPSHOT_REGION_VISIBLE, WEBKIT_SNAPSHOT_OPTIONS_NONE, cancellable_.get(),
        [](GObject* source, GAsyncResult* result, gpointer data) {
            std::unique_ptr<SnapshotCall> call(static_cast<SnapshotCall*>(data));
            GError* error = nullptr;
            GdkTexture* texture = webkit_web_view_get_snapshot_finish(WEBKIT_WEB_VIEW(source), result, &error);
            if (error) g_error_free(error);
            if (!texture) {
                call->done(std::nullopt);
                return;
            }
            call->pixels = memoryCopy(texture);
            g_object_unref(texture);
            if (!call->pixels) {
                call->done(std::nullopt);
                return;
            }
            // Encoding a screenful takes tens of milliseconds: not on the
            // main loop while a talk goes on.
            GTask* task = g_task_new(nullptr, nullptr,
                                     [](GObject*, GAsyncResult* result, gpointer data) {
                                         std::unique_ptr<SnapshotCall> call(static_cast<SnapshotCall*>(data));
                                         g_task_propagate_boolean(G_TASK(result), nullptr);
                                         call->done(std::move(call->png));
                                     },
                                     call.get());
            g_task_set_task_data(task, call.release(), nullptr);
            g_task_run_in_thread(task, [](GTask* task, gpointer, gpointer data, GCancellable*) {
                auto* call = static_cast<SnapshotCall*>(data);
                GBytes* png = gdk_texture_save_to_png_bytes(call->pixels);
                if (png) {
                    gsize size = 0;
                    const auto* bytes = static_cast<const char*>(g_bytes_get_data(png, &size));
                    call->png = std::string(bytes, size);
                    g_bytes_unref(png);
                }
                g_task_return_boolean(task, TRUE);
            });
            g_object_unref(task);
        },
        call);
}

void WebKitPage::evaluateAsyncFunction(const std::string& body,
                                       std::function<void(Result<std::optional<std::string>>)> done) {
    auto* call = new ScriptCall{std::move(done)};
    // No arguments, and the page's own world (no world name): the script
    // sees the page's globals, and a returned promise is awaited.
    webkit_web_view_call_async_javascript_function(
        view_.get(), body.c_str(), static_cast<gssize>(body.size()), nullptr, nullptr, nullptr,
        cancellable_.get(),
        [](GObject* source, GAsyncResult* result, gpointer data) {
            std::unique_ptr<ScriptCall> call(static_cast<ScriptCall*>(data));
            GError* error = nullptr;
            JSCValue* value = webkit_web_view_call_async_javascript_function_finish(WEBKIT_WEB_VIEW(source), result, &error);
            if (!value) {
                std::string message = error ? error->message : _("The script failed.");
                if (error && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
                    message = _("The page closed before the script finished.");
                }
                if (error) g_error_free(error);
                call->done(Error{message});
                return;
            }
            std::optional<std::string> text;
            if (!jsc_value_is_undefined(value) && !jsc_value_is_null(value)) {
                char* printed = jsc_value_to_string(value);
                text = printed ? printed : "";
                g_free(printed);
            }
            g_object_unref(value);
            call->done(std::move(text));
        },
        call);
}

std::shared_ptr<WebPage> WebKitPageFactory::makePage(const std::optional<Uuid>& profileId) {
    auto page = std::make_shared<WebKitPage>(sessions_.session(profileId), accelerated_);
    if (hiddenWidth_ > 0 && hiddenHeight_ > 0) {
        // A page in no window is laid out at the size it will be shown at,
        // so that coming on stage needs no new layout of the page.
        int minimum = 0, natural = 0;
        gtk_widget_measure(page->widget(), GTK_ORIENTATION_HORIZONTAL, -1, &minimum, &natural, nullptr, nullptr);
        gtk_widget_measure(page->widget(), GTK_ORIENTATION_VERTICAL, hiddenWidth_, &minimum, &natural, nullptr, nullptr);
        GtkAllocation allocation{0, 0, hiddenWidth_, hiddenHeight_};
        gtk_widget_size_allocate(page->widget(), &allocation, -1);
    }
    return page;
}

}  // namespace lectern
