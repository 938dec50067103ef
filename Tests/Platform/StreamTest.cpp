#include "Stream.h"

#include "CountedComponent.h"
#include "ManyThreads.h"
#include "Marshal.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace
{
using namespace std::string_literals;

class MemoryStream : public testing::Test
{
protected:
    MemoryStream() { EXPECT_EQ(CreateMemoryStream(&m_stream), S_OK); }

    std::string ReadAll()
    {
        std::string text(100, '#');
        ULONG size = 0;
        EXPECT_EQ(m_stream->Seek(0, STREAM_SEEK_SET, nullptr), S_OK);
        EXPECT_EQ(m_stream->Read(text.data(), 100, &size), S_FALSE);
        text.resize(size);
        return text;
    }

    CComPtr<IStream> m_stream;
};

TEST_F(MemoryStream, WritesReadsAndOverwrites)
{
    ULONG size = 0;
    EXPECT_EQ(m_stream->Write("abcdef", 6, &size), S_OK);
    EXPECT_EQ(size, 6U);
    ULONGLONG position = 0;
    EXPECT_EQ(m_stream->Seek(-4, STREAM_SEEK_CUR, &position), S_OK);
    EXPECT_EQ(position, 2U);
    EXPECT_EQ(m_stream->Write("XY", 2, nullptr), S_OK);
    char next[2] = {};
    EXPECT_EQ(m_stream->Read(next, 2, &size), S_OK);
    EXPECT_EQ(std::string(next, 2), "ef");
    EXPECT_EQ(ReadAll(), "abXYef");
}

TEST_F(MemoryStream, FillsGapsAndCuts)
{
    EXPECT_EQ(m_stream->Seek(2, STREAM_SEEK_END, nullptr), S_OK);
    ULONG size = 1;
    char byte = 0;
    EXPECT_EQ(m_stream->Read(&byte, 1, &size), S_FALSE);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(m_stream->Write("x", 1, nullptr), S_OK);
    EXPECT_EQ(ReadAll(), "\0\0x"s);
    EXPECT_EQ(m_stream->SetSize(1), S_OK);
    EXPECT_EQ(ReadAll(), "\0"s);
}

TEST_F(MemoryStream, RefusesWhatCannotBe)
{
    EXPECT_EQ(m_stream->Write("ab", 2, nullptr), S_OK);
    ULONGLONG position = 77;
    EXPECT_EQ(m_stream->Seek(-3, STREAM_SEEK_CUR, &position), E_INVALIDARG);
    EXPECT_EQ(m_stream->Seek(0, static_cast<STREAM_SEEK>(3), &position), E_INVALIDARG);
    EXPECT_EQ(m_stream->Seek(std::numeric_limits<LONGLONG>::max(), STREAM_SEEK_CUR, &position), E_INVALIDARG);
    EXPECT_EQ(position, 77U);
    EXPECT_EQ(m_stream->SetSize(std::numeric_limits<ULONGLONG>::max()), E_OUTOFMEMORY);
    EXPECT_EQ(ReadAll(), "ab");
}

class Marshalling : public testing::Test
{
protected:
    ~Marshalling() override
    {
        m_object.Release();
        EXPECT_EQ(CCountedBase::s_living, 0) << "nothing may hold the object any more";
    }

    CComPtr<IStream> Pack()
    {
        CComPtr<IStream> stream;
        EXPECT_EQ(CoMarshalInterThreadInterfaceInStream(ISecond::kInterfaceId, m_object, &stream), S_OK);
        return stream;
    }

    CComPtr<IFirst> m_object{CCounted::Create(5)};
};

TEST_F(Marshalling, LetsGoOfTheInterfaceOfAnUnusedStream)
{
    CComPtr<IStream> stream = Pack();
    EXPECT_EQ(ReferencesOf(m_object), 2U);
    stream.Release();
    EXPECT_EQ(ReferencesOf(m_object), 1U);
}

TEST_F(Marshalling, GivesTheInterfaceToOneOfManyThreads)
{
    const CComPtr<IStream> stream = Pack();
    std::atomic<int> taken{0};
    std::atomic<int> refused{0};
    RunOnManyThreads([&, copy = stream]() mutable {
        CComPtr<ISecond> second;
        void* object = nullptr;
        const HRESULT result = CoGetInterfaceAndReleaseStream(copy.Detach(), ISecond::kInterfaceId, &object);
        second.Attach(static_cast<ISecond*>(object));
        taken += result == S_OK && second->Second() == -5 ? 1 : 0;
        refused += result == E_UNEXPECTED && second == nullptr ? 1 : 0;
    });
    EXPECT_EQ(taken, 1);
    EXPECT_EQ(refused, 3);
    EXPECT_EQ(ReferencesOf(m_object), 1U);
    EXPECT_EQ(ReferencesOf(stream), 1U) << "every attempt releases the stream";
}

TEST_F(Marshalling, ReportsWhatIsMissing)
{
    constexpr IID kForeign{9, 9, 9, {}};
    CComPtr<IStream> stream;
    EXPECT_EQ(CoMarshalInterThreadInterfaceInStream(kForeign, m_object, &stream), E_NOINTERFACE);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(CoMarshalInterThreadInterfaceInStream(IID_IUnknown, nullptr, &stream), E_POINTER);
    void* object = nullptr;
    EXPECT_EQ(CoGetInterfaceAndReleaseStream(nullptr, IID_IUnknown, &object), E_POINTER);
    EXPECT_EQ(CoGetInterfaceAndReleaseStream(Pack().Detach(), IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(CoGetInterfaceAndReleaseStream(Pack().Detach(), kForeign, &object), E_NOINTERFACE);
    ASSERT_EQ(CreateMemoryStream(&stream), S_OK);
    EXPECT_EQ(CoGetInterfaceAndReleaseStream(stream.Detach(), IID_IUnknown, &object), E_INVALIDARG);
    EXPECT_EQ(object, nullptr);
}
} // namespace
