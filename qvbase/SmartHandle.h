// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/Export.h>

#include <type_traits>

namespace qvm {

/// The reference count behind smart<T>: handles copied from one another form an ownership group, and the last member of
/// the group has the handlee deleted. The count is atomic: handles of one group may be copied and released in several
/// threads. One handle object, and the handlee, belong to one thread at a time.
class QVBASE_EXPORT SmartHandleCore {
public:
    virtual ~SmartHandleCore();

protected:
    /// Deletes what the handle referred to. With a @p deleter, that is called on the handlee; without one, the handlee
    /// is destroyed through its virtual destructor, and a null handlee is ignored.
    virtual void deleteHandlee(void* handlee, void (*deleter)(void*)) = 0;

    SmartHandleCore() noexcept = default;
    /// Joins the group of @p other.
    SmartHandleCore(SmartHandleCore const& other) noexcept;
    SmartHandleCore& operator=(SmartHandleCore const&) = delete;

    /// Founds a group of one. @p handlee is what a @p deleter, where there is one, is to be called with.
    void found(void* handlee, void (*deleter)(void*));
    void swapGroup(SmartHandleCore& other) noexcept;
    /// Leaves the group. The last member calls deleteHandlee(): with the pointer the group was founded with where there
    /// is a deleter, else with @p handlee, the same object as the leaving handle's type sees it.
    void leave(void* handlee);

private:
    struct Group;
    Group* m_group = nullptr;
};

/// Reference-counted shared handle on a polymorphic object. The last handle of a group deletes the object.
///
/// A handle on a derived class converts to one on its base and joins the same group. T must have a virtual destructor
/// by the time a group without deleter dies through a smart<T>.
template <class T> class smart : public SmartHandleCore {
public:
    /// An empty handle.
    smart() noexcept = default;
    /// Takes ownership of @p handlee; null gives an empty handle.
    explicit smart(T* handlee)
        : m_handlee(handlee)
    {
        if (handlee)
            found(handlee, nullptr);
    }
    /// Takes ownership of @p handlee, to be given to @p deleter (even a null one) when the last handle goes.
    smart(T* handlee, void (*deleter)(void*))
        : m_handlee(handlee)
    {
        found(handlee, deleter);
    }
    smart(smart const& other) noexcept
        : SmartHandleCore(other)
        , m_handlee(other.m_handlee)
    {
    }
    smart(smart&& other) noexcept { swap(other); }
    template <class Derived, class = std::enable_if_t<std::is_convertible_v<Derived*, T*>>>
    smart(smart<Derived> const& other) noexcept
        : SmartHandleCore(other)
        , m_handlee(other.get())
    {
    }
    ~smart() override { reset(); }

    smart& operator=(smart other) noexcept
    {
        swap(other);
        return *this;
    }

    void reset()
    {
        T* const handlee = m_handlee;
        m_handlee = nullptr;
        leave(const_cast<std::remove_cv_t<T>*>(handlee));
    }
    /// Lets go of the object held so far and takes ownership of @p handlee.
    void reset(T* handlee) { smart(handlee).swap(*this); }

    void swap(smart& other) noexcept
    {
        swapGroup(other);
        T* const handlee = m_handlee;
        m_handlee = other.m_handlee;
        other.m_handlee = handlee;
    }

    T* get() const noexcept { return m_handlee; }
    T& operator*() const noexcept { return *m_handlee; }
    T* operator->() const noexcept { return m_handlee; }
    bool null() const noexcept { return !m_handlee; }
    explicit operator bool() const noexcept { return m_handlee; }

    /// Whether both refer to the same object (or to none).
    friend bool operator==(smart const& left, smart const& right) noexcept { return left.m_handlee == right.m_handlee; }
    friend bool operator!=(smart const& left, smart const& right) noexcept { return !(left == right); }

protected:
    void deleteHandlee(void* handlee, void (*deleter)(void*)) override
    {
        if (deleter)
            deleter(handlee);
        else
            delete static_cast<T*>(handlee);
    }

private:
    T* m_handlee = nullptr;
};

} // namespace qvm
