#pragma once

#include "CComObject.h"

#include <atomic>

struct IFirst : IUnknown
{
    static constexpr IID kInterfaceId{0x11111111, 1, 1, {1}};
    virtual int First() = 0;

protected:
    ~IFirst() = default;
};

struct ISecond : IUnknown
{
    static constexpr IID kInterfaceId{0x22222222, 2, 2, {2}};
    virtual int Second() = 0;

protected:
    ~ISecond() = default;
};

/// Component whose living instances are counted.
class CCountedBase : public IFirst, public ISecond
{
public:
    explicit CCountedBase(int value) : m_value(value) { ++s_living; }
    int First() override { return m_value; }
    int Second() override { return -m_value; }

    static inline std::atomic<int> s_living{0};

protected:
    ~CCountedBase() { --s_living; }

private:
    int m_value;
};

using CCounted = CComObject<CCountedBase, IFirst, ISecond>;

/// The count of an object, seen from outside.
inline ULONG ReferencesOf(IUnknown* object)
{
    object->AddRef();
    return object->Release();
}
