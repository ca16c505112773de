#include "web/platform/webkit_page.h"

#include "web/platform/web_sessions.h"

namespace lectern {

namespace {

// A load that has not finished after this long fails as timed out.
constexpr guint loadTimeoutSeconds = 60;

struct ScriptCall {
    std::function<void(Result<std::optional<std::string>>)> done;
};

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
                if (event == WEBKIT_LOAD_STARTED) self->armTimeout();
                if (event != WEBKIT_LOAD_FINISHED) return;
                self->disarmTimeout();
                // A failed load also ends with "finished"; its failure was
                // reported already.
                if (std::exchange(self->failed_, false)) return;
                if (self->delegate_) self->delegate_->loadFinished();
            }));
    connect("load-failed", G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent, char*, GError* error, gpointer data) {
                auto* self = static_cast<WebKitPage*>(data);
                self->failed_ = true;
                self->disarmTimeout();
                bool cancelled = g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED);
                if (self->delegate_) self->delegate_->loadFailed(error->message, cancelled);
                // The pane shows the failure itself: no engine error page.
                return gboolean(TRUE);
            }));
    connect("web-process-terminated",
            G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason, gpointer data) {
                auto* self = static_cast<WebKitPage*>(data);
                if (self->delegate_) self->delegate_->processTerminated();
            }));
    connect("create", G_CALLBACK(+[](WebKitWebView*, WebKitNavigationAction* action, gpointer data) -> GtkWidget* {
                auto* self = static_cast<WebKitPage*>(data);
                WebKitURIRequest* request = webkit_navigation_action_get_request(action);
                if (self->delegate_ && request) self->delegate_->newWindowRequested(webkit_uri_request_get_uri(request));
                // Never a second view.
                return nullptr;
            }));
    connect("decide-policy",
            G_CALLBACK(+[](WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type, gpointer data) {
                auto* self = static_cast<WebKitPage*>(data);
                if (type != WEBKIT_POLICY_DECISION_TYPE_RESPONSE || !self->delegate_) return gboolean(FALSE);
                auto* response = WEBKIT_RESPONSE_POLICY_DECISION(decision);
                if (!webkit_response_policy_decision_is_main_frame_main_resource(response)) return gboolean(FALSE);
                WebKitURIResponse* answer = webkit_response_policy_decision_get_response(response);
                self->delegate_->responseReceived(static_cast<int>(webkit_uri_response_get_status_code(answer)));
                return gboolean(FALSE);  // the engine's usual decision
            }));
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
            self->failed_ = true;
            if (delegate) delegate->loadFailed("The request timed out.", false);
            return G_SOURCE_REMOVE;
        },
        this);
}

void WebKitPage::disarmTimeout() {
    if (timeout_) g_source_remove(std::exchange(timeout_, 0));
}

void WebKitPage::load(const std::string& url) {
    failed_ = false;
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

double WebKitPage::zoom() const { return webkit_web_view_get_zoom_level(view_.get()); }

void WebKitPage::setZoom(double zoom) { webkit_web_view_set_zoom_level(view_.get(), zoom); }

void WebKitPage::setDelegate(WebPageDelegate* delegate) { delegate_ = delegate; }

void WebKitPage::reload() { webkit_web_view_reload(view_.get()); }

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
                std::string message = error ? error->message : "The script failed.";
                if (error && g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
                    message = "The page closed before the script finished.";
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
