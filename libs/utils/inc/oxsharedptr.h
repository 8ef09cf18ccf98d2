#pragma once
// ox::const_sharedPtr: shared ownership of immutable geometry (meshes, polylines) between a host
// and the entities that draw it.
#include "oxassert.h"

#include <memory>
#include <utility>

namespace ox {

template <class T>
class const_sharedPtr {
public:
    const_sharedPtr() noexcept = default;
    const_sharedPtr(std::nullptr_t) noexcept {}
    explicit const_sharedPtr(std::shared_ptr<const T> p) noexcept : m_p(std::move(p)) {}
    const_sharedPtr(std::shared_ptr<T> p) noexcept : m_p(std::move(p)) {}

    template <class... Args>
    static const_sharedPtr make(Args&&... args) {
        return const_sharedPtr(std::make_shared<const T>(std::forward<Args>(args)...));
    }

    const T* get() const noexcept { return m_p.get(); }
    explicit operator bool() const noexcept { return static_cast<bool>(m_p); }

    /// The object, or null after reporting "m_p != nullptr" through the assertion handler.
    /// Drawing code uses this and skips its work on null, so a bad pointer never crashes a frame.
    const T* checkedGet() const {
        if (!m_p) OX_ASSERT(m_p != nullptr);
        return m_p.get();
    }
    /// Dereferencing an empty pointer reports the assertion and is then a fatal programming error.
    const T* operator->() const { return checkedGet(); }
    const T& operator*() const { return *checkedGet(); }

    friend bool operator==(const const_sharedPtr& a, const const_sharedPtr& b) noexcept { return a.m_p == b.m_p; }

private:
    std::shared_ptr<const T> m_p;
};

} // namespace ox
