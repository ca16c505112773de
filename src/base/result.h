#pragma once

#include <string>
#include <utility>
#include <variant>

namespace lectern {

// What kind of failure an Error is, where callers need to tell them apart.
enum class ErrorKind {
    other,
    fileReadCorruptFile,  // the file is not in the expected format
    fileReadNoSuchFile,   // the file or a required member is missing
    fileTooLarge,         // the file is larger than the reader accepts
    decoding,             // the stored JSON could not be read
    fileWrite,            // writing failed; nothing was replaced
};

// A failure as a value: a short, sentence-case message shown in place.
struct Error {
    std::string message;
    ErrorKind kind = ErrorKind::other;
    friend bool operator==(const Error&, const Error&) = default;
};

// Either a value or an Error. Failures are values, never exceptions.
template <class T>
class Result {
public:
    Result(T value) : state_(std::move(value)) {}
    Result(Error error) : state_(std::move(error)) {}

    bool ok() const { return std::holds_alternative<T>(state_); }
    explicit operator bool() const { return ok(); }

    T& value() & { return std::get<T>(state_); }
    const T& value() const& { return std::get<T>(state_); }
    T&& value() && { return std::get<T>(std::move(state_)); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }

    const Error& error() const { return std::get<Error>(state_); }

private:
    std::variant<T, Error> state_;
};

// For operations that return nothing but may fail.
struct Done {};
using Status = Result<Done>;

}  // namespace lectern
