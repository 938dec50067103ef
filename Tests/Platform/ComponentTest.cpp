#include "CAdapt.h"
#include "CComBSTR.h"
#include "CComQIPtr.h"
#include "CountedComponent.h"
#include "ManyThreads.h"

#include <gtest/gtest.h>

#include <map>

namespace
{
TEST(ComObject, StartsWithOneReferenceAndDeletesItselfWithTheLast)
{
    CComPtr<CCounted> object = CCounted::Create(7);
    EXPECT_EQ(CCountedBase::s_living, 1);
    EXPECT_EQ(ReferencesOf(static_cast<IFirst*>(object)), 1U);
    object.Release();
    EXPECT_EQ(CCountedBase::s_living, 0);
}

TEST(ComObject, AnswersItsInterfacesWithOneIdentity)
{
    const CComPtr<CCounted> object = CCounted::Create(7);
    const CComQIPtr<IFirst> first(object);
    const CComQIPtr<ISecond> second(first);
    const CComQIPtr<IUnknown> identity(second);
    EXPECT_EQ(first->First(), 7);
    EXPECT_EQ(second->Second(), -7);
    EXPECT_EQ(identity.Get(), static_cast<IUnknown*>(static_cast<IFirst*>(object.Get())));
    EXPECT_TRUE(first.IsEqualObject(second));
    EXPECT_FALSE(first.IsEqualObject(nullptr));
    EXPECT_FALSE(first.IsEqualObject(CComQIPtr<IFirst>(CCounted::Create(7))));
}

TEST(ComObject, RefusesForeignInterfacesAndNullTargets)
{
    const CComPtr<CCounted> object = CCounted::Create(7);
    void* target = object.Get();
    EXPECT_EQ(object->QueryInterface(IID{1, 2, 3, {}}, &target), E_NOINTERFACE);
    EXPECT_EQ(target, nullptr);
    EXPECT_EQ(object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST(ComObject, CountsFromManyThreads)
{
    {
        const CComPtr<IFirst> object = CCounted::Create(7);
        RunOnManyThreads([object] {
            for (int round = 0; round < 1000; ++round)
            {
                const CComQIPtr<ISecond> second(object);
            }
        });
        EXPECT_EQ(ReferencesOf(object), 1U);
    }
    EXPECT_EQ(CCountedBase::s_living, 0);
}

TEST(ComPtr, CountsCopiesAndKeepsMoves)
{
    CComPtr<IFirst> first = CCounted::Create(7);
    CComPtr<IFirst> copy = first;
    EXPECT_EQ(ReferencesOf(first), 2U);
    CComPtr<IFirst> moved = std::move(copy);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(ReferencesOf(first), 2U);
    EXPECT_EQ(*&moved, nullptr);
    EXPECT_EQ(ReferencesOf(first), 1U) << "the address operator lets go of what is held";
    IFirst* raw = nullptr;
    EXPECT_EQ(first.CopyTo(&raw), S_OK);
    EXPECT_EQ(first.CopyTo(nullptr), E_POINTER);
    EXPECT_EQ(ReferencesOf(first), 2U);
    moved.Attach(raw);
    EXPECT_EQ(ReferencesOf(first), 2U);
    raw = moved.Detach();
    EXPECT_EQ(ReferencesOf(first), 2U);
    raw->Release();
}

TEST(ComPtr, FetchesInterfaces)
{
    const CComPtr<IFirst> first = CCounted::Create(7);
    CComPtr<ISecond> second;
    EXPECT_EQ(first.QueryInterface(&second), S_OK);
    EXPECT_EQ(second->Second(), -7);
    EXPECT_EQ(CComPtr<IFirst>().QueryInterface(&second), E_POINTER);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ((CComQIPtr<ISecond, &GUID_NULL>(first)), nullptr);
}

TEST(Adapt, LetsOwnersLiveInContainers)
{
    std::map<CAdapt<CComBSTR>, CAdapt<CComPtr<IFirst>>> map;
    map[CComBSTR("b")] = CComPtr<IFirst>(CCounted::Create(2));
    map[CComBSTR("a")] = CComPtr<IFirst>(CCounted::Create(1));
    EXPECT_EQ(map.begin()->second.m_T->First(), 1);
    map.clear();
    EXPECT_EQ(CCountedBase::s_living, 0);
}
} // namespace
