#pragma once

#include "python/src/Convert.h"

#include <stdexcept>
#include <string>

namespace PrmPython {

/// What a handle refers to was deleted: ReferenceError.
class DeadReference : public std::exception {
public:
    const char* what() const noexcept override { return "the parameter, group or project is not there any more"; }
};

/// A call that is not possible now, or not from this thread: RuntimeError.
class NotNow : public std::exception {
public:
    explicit NotNow(std::string message) : m_message(std::move(message)) {}
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
};

/// Raises the Python exception of the class with one argument.
[[noreturn]] void raise(PyObject* kind, const QString& message);
/// Raises KeyError with the names that are most like the one that is not there.
[[noreturn]] void raiseMissing(const char* what, const QString& name, const QStringList& present);

/// std::runtime_error becomes ValueError, std::bad_cast TypeError.
void registerErrors();

} // namespace PrmPython
