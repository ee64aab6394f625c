#pragma once

#include <utility>

namespace velmar {

/// Observable properties are written, and notify, only when the value really changes: the
/// 30 Hz position timer relies on this to stay silent while nothing moves.
/// Returns whether the field changed.
template <typename T, typename U> bool assignIfChanged(T& field, U&& value)
{
    if (field == value)
        return false;
    field = std::forward<U>(value);
    return true;
}

/// Assigns the value and, when it changed, raises the object's notify signal.
template <typename Object, typename T, typename U>
void updateProperty(Object* object, T& field, const U& value, void (Object::*changed)())
{
    if (assignIfChanged(field, value))
        (object->*changed)();
}

} // namespace velmar
