#pragma once

#include <memory>

/// The one place in an object from which all its shared pointers come.
struct virtual_enable_shared_from_this_base
    : std::enable_shared_from_this<virtual_enable_shared_from_this_base> {
    virtual ~virtual_enable_shared_from_this_base() = default;
};

/// Lets a class with several bases hand out shared pointers to itself.
///
/// Each base derives from this template for itself; since the base behind it is virtual, all of them share
/// one control block. `shared_from_this` throws std::bad_weak_ptr on an object that no shared pointer owns,
/// so in a constructor and in a destructor always.
template <class T>
struct virtual_enable_shared_from_this : virtual virtual_enable_shared_from_this_base {
    std::shared_ptr<T> shared_from_this()
    {
        // Down from a virtual base: only a dynamic cast knows the way.
        return std::dynamic_pointer_cast<T>(virtual_enable_shared_from_this_base::shared_from_this());
    }
};
