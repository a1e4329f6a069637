#pragma once

#include <exception>
#include <string>

/// The message of the error that it throws, else nothing.
template <class Act> std::string errorOf(const Act& act) {
    try {
        act();
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}
