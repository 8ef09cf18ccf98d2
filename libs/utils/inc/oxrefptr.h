#pragma once
// ox::refPtr: the intrusive smart pointer through which reference-counted objects are shared.
#include "oxassert.h"
#include "oxrefobj.h"

#include <cstddef>
#include <functional>
#include <utility>

namespace ox {

template <class T> struct addRef {
    void operator()(T* p) const { p->addRef(); }
};
template <class T> struct release {
    void operator()(T* p) const { p->release(); }
};

template <class T, class AddRef = ox::addRef<T>, class Release = ox::release<T>>
class refPtr {
public:
    using element_type = T;

    refPtr() noexcept = default;
    refPtr(std::nullptr_t) noexcept {}
    refPtr(T* p) : m_p(p) { if (m_p) AddRef{}(m_p); }
    refPtr(const refPtr& other) : refPtr(other.m_p) {}
    refPtr(refPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}
    template <class U, class A, class R>
        requires std::is_convertible_v<U*, T*>
    refPtr(const refPtr<U, A, R>& other) : refPtr(static_cast<T*>(other.get())) {}

    ~refPtr() { reset(); }

    refPtr& operator=(const refPtr& other) { return assign(other.m_p); }
    refPtr& operator=(refPtr&& other) noexcept {
        if (this != &other) {
            T* old = std::exchange(m_p, std::exchange(other.m_p, nullptr));
            if (old) Release{}(old);
        }
        return *this;
    }
    refPtr& operator=(T* p) { return assign(p); }
    refPtr& operator=(std::nullptr_t) { reset(); return *this; }

    void reset() {
        if (T* old = std::exchange(m_p, nullptr)) Release{}(old);
    }
    /// Hands the reference to the caller without releasing it.
    T* detach() noexcept { return std::exchange(m_p, nullptr); }
    /// Takes over a reference the caller already owns (no addRef).
    void attach(T* p) { reset(); m_p = p; }

    T* get() const noexcept { return m_p; }
    explicit operator bool() const noexcept { return m_p != nullptr; }
    bool isNull() const noexcept { return m_p == nullptr; }

    /// Dereferencing an empty pointer is a programming error: it is reported through the
    /// assertion handler and then thrown as `false` so the caller cannot go on with a null object.
    T* operator->() const { return checked(); }
    T& operator*() const { return *checked(); }

    /// Address of the raw slot, for out-parameters of the form `iX** out`. Releases the current object.
    T** put() { reset(); return &m_p; }

    friend bool operator==(const refPtr& a, const refPtr& b) noexcept { return a.m_p == b.m_p; }
    friend bool operator==(const refPtr& a, std::nullptr_t) noexcept { return a.m_p == nullptr; }
    friend bool operator==(const refPtr& a, const T* b) noexcept { return a.m_p == b; }
    friend auto operator<=>(const refPtr& a, const refPtr& b) noexcept { return std::compare_three_way{}(a.m_p, b.m_p); }

private:
    refPtr& assign(T* p) {
        if (p) AddRef{}(p);
        T* old = std::exchange(m_p, p);
        if (old) Release{}(old);
        return *this;
    }
    T* checked() const {
        if (m_p == nullptr) {
            OX_ASSERT(m_p != NULL);
            throw false;
        }
        return m_p;
    }

    T* m_p = nullptr;
};

/// Dynamic type test on a reference-counted object: empty when the object is not a U.
template <class U, class T, class A, class R>
refPtr<U> dynamicRefCast(const refPtr<T, A, R>& p) {
    return refPtr<U>(dynamic_cast<U*>(p.get()));
}

} // namespace ox

template <class T, class A, class R>
struct std::hash<ox::refPtr<T, A, R>> {
    std::size_t operator()(const ox::refPtr<T, A, R>& p) const noexcept { return std::hash<T*>{}(p.get()); }
};
