#include "CAccessor.h"
#include "CArrayAccessor.h"
#include "CComObject.h"
#include "CErrorRecorder.h"
#include "CStreamQIPtr.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <thread>

namespace ZoVelkor
{
namespace
{
TEST(ArrayAccessor, KeepsElementsInOrderWhenTheSizeChanges)
{
    CArrayAccessor<std::string> array{"a", "b"};
    array.SetSize(3);
    EXPECT_EQ(array, (CArrayAccessor<std::string>{"a", "b", ""}));
    const CArrayAccessor<std::string> copy = array;
    array.SetSize(1);
    array.Append("c");
    EXPECT_EQ(std::accumulate(array.begin(), array.end(), std::string()), "ac");
    EXPECT_EQ(copy.GetSize(), 3U);
}

TEST(ArrayAccessor, RaisesAnErrorBeyondTheLastElement)
{
    CErrorRecorder recorder;
    CArrayAccessor<int> array;
    EXPECT_THROW(array[0], CShellError);
    array.SetSize(2);
    array[1] = 7;
    const CArrayAccessor<int>& constant = array;
    EXPECT_EQ(constant[1], 7);
    EXPECT_THROW(constant[2], CShellError);
    EXPECT_THROW(constant[~0UL], CShellError);
    EXPECT_EQ(recorder.Take()[1].report.message, "Array index out of range (2 of 2)");
}

TEST(Accessor, TellsNoValueFromAValue)
{
    CErrorRecorder recorder;
    CAccessor<int> accessor;
    EXPECT_EQ(accessor.GetOr(5), 5);
    EXPECT_THROW(static_cast<void>(accessor.Get()), CShellError);
    accessor.Put(0);
    EXPECT_EQ(accessor.Get(), 0);
    accessor.Clear();
    EXPECT_FALSE(accessor.IsSet());
}

struct IPassenger : public IUnknown
{
    static constexpr IID kInterfaceId{5, 5, 5, {5}};

protected:
    ~IPassenger() = default;
};

class CPassenger : public IPassenger
{
public:
    CPassenger() { ++s_instances; }
    static inline int s_instances = 0;

protected:
    ~CPassenger() { --s_instances; }
};

constexpr IID kAbsentId{6, 6, 6, {6}};

template <const IID* kIid = &IPassenger::kInterfaceId>
CStreamQIPtr<IPassenger, kIid> StreamWithPassenger(HRESULT expected = S_OK)
{
    CStreamQIPtr<IPassenger, kIid> stream;
    EXPECT_EQ(stream.Marshal(CComObject<CPassenger, IPassenger>::Create().Get()), expected);
    return stream;
}

TEST(StreamQIPtr, CarriesAnInterfaceToAnotherThreadOnce)
{
    auto stream = StreamWithPassenger();
    EXPECT_EQ(CPassenger::s_instances, 1) << "the stream keeps the object";
    std::jthread([&stream] {
        CComPtr<IPassenger> passenger;
        EXPECT_EQ(stream.Unmarshal(&passenger), S_OK);
        EXPECT_NE(passenger, nullptr);
        EXPECT_EQ(stream.Unmarshal(&passenger), S_FALSE);
    }).join();
    EXPECT_EQ(CPassenger::s_instances, 0);
}

TEST(StreamQIPtr, ReleasesAContentThatWasNeverFetched)
{
    auto stream = StreamWithPassenger();
    auto other = StreamWithPassenger();
    other = std::move(stream);
    EXPECT_EQ(CPassenger::s_instances, 1);
    {
        const auto last = std::move(other);
    }
    EXPECT_EQ(CPassenger::s_instances, 0);
}

TEST(StreamQIPtr, FailsForNullAndForAnObjectWithoutTheInterface)
{
    CErrorRecorder recorder;
    auto stream = StreamWithPassenger();
    EXPECT_EQ(stream.Unmarshal(nullptr), E_POINTER);
    EXPECT_FALSE(stream.IsEmpty());
    EXPECT_EQ(stream.Marshal(nullptr), E_POINTER);
    EXPECT_TRUE(stream.IsEmpty());
    EXPECT_TRUE(StreamWithPassenger<&kAbsentId>(E_NOINTERFACE).IsEmpty());
}
} // namespace
} // namespace ZoVelkor
