#pragma once

#include <glib-object.h>

#include <functional>
#include <type_traits>
#include <utility>

namespace lectern {

// One strong reference to a GObject of the C API (libadwaita widgets and
// the like), released when the holder goes away. Copies add a reference.
template <class T>
class GObjectRef {
public:
    GObjectRef() = default;
    // Takes the reference of a new object as its constructor returned it:
    // sinks a floating one (widgets) or adopts a full one.
    static GObjectRef take(T* object) {
        GObjectRef ref;
        if (object && g_object_is_floating(object)) g_object_ref_sink(object);
        ref.object_ = object;
        return ref;
    }
    // Adds a reference of our own, for objects whose reference belongs to
    // someone else (a window belongs to GTK's list of toplevels).
    static GObjectRef retain(T* object) {
        GObjectRef ref;
        if (object) ref.object_ = static_cast<T*>(g_object_ref(object));
        return ref;
    }
    GObjectRef(const GObjectRef& other) : object_(other.object_) {
        if (object_) g_object_ref(object_);
    }
    GObjectRef(GObjectRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    GObjectRef& operator=(GObjectRef other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~GObjectRef() { reset(); }

    void reset() {
        if (auto* object = std::exchange(object_, nullptr)) g_object_unref(object);
    }
    T* get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    T* object_ = nullptr;
};

// A handler of a GObject signal of the C API that calls a std::function and
// disconnects itself when the connection goes away. It keeps the instance
// alive until then, so disconnecting is always safe.
class SignalConnection {
public:
    SignalConnection() = default;
    SignalConnection(SignalConnection&& other) noexcept
        : instance_(std::exchange(other.instance_, nullptr)), id_(std::exchange(other.id_, 0)) {}
    SignalConnection& operator=(SignalConnection&& other) noexcept {
        if (this != &other) {
            disconnect();
            instance_ = std::exchange(other.instance_, nullptr);
            id_ = std::exchange(other.id_, 0);
        }
        return *this;
    }
    SignalConnection(const SignalConnection&) = delete;
    SignalConnection& operator=(const SignalConnection&) = delete;
    ~SignalConnection() { disconnect(); }

    // `Args` are the signal's arguments between the instance and the user
    // data, for example `const char*` for AdwMessageDialog::response.
    template <class... Args>
    static SignalConnection connect(gpointer instance, const char* signal,
                                    std::type_identity_t<std::function<void(Args...)>> handler) {
        SignalConnection connection;
        auto* data = new std::function<void(Args...)>(std::move(handler));
        connection.id_ = g_signal_connect_data(instance, signal, G_CALLBACK(&Trampoline<Args...>::call), data,
                                               &Trampoline<Args...>::destroy, GConnectFlags(0));
        connection.instance_ = g_object_ref(instance);
        return connection;
    }

    void disconnect() {
        if (!instance_) return;
        if (id_ && g_signal_handler_is_connected(instance_, id_)) g_signal_handler_disconnect(instance_, id_);
        g_object_unref(std::exchange(instance_, nullptr));
        id_ = 0;
    }

private:
    template <class... Args>
    struct Trampoline {
        static void call(gpointer, Args... args, gpointer data) {
            (*static_cast<std::function<void(Args...)>*>(data))(args...);
        }
        static void destroy(gpointer data, GClosure*) { delete static_cast<std::function<void(Args...)>*>(data); }
    };

    gpointer instance_ = nullptr;
    gulong id_ = 0;
};

}  // namespace lectern
