#pragma once

#include <QObject>
#include <QPointer>

// A non-owning reference to a delegate. When the delegate is also a QObject
// its destruction is tracked, so a destroyed delegate reads as none.
template <typename Interface> class DoodleWeak
{
public:
    DoodleWeak() = default;
    DoodleWeak(Interface *delegate) { *this = delegate; }

    DoodleWeak &operator=(Interface *delegate)
    {
        m_raw = delegate;
        m_tracked = dynamic_cast<QObject *>(delegate);
        m_isObject = !m_tracked.isNull();
        return *this;
    }

    Interface *get() const { return m_isObject && m_tracked.isNull() ? nullptr : m_raw; }
    Interface *operator->() const { return get(); }
    explicit operator bool() const { return get() != nullptr; }

private:
    Interface *m_raw = nullptr;
    QPointer<QObject> m_tracked;
    bool m_isObject = false;
};
