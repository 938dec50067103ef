#pragma once

#include "CObjectDataReference.h"
#include "IZOScpiBlockData.h"
#include "ZoExport.h"

#include <cstdint>
#include <string_view>

namespace ZoVelkor
{

/// Base of block readers: recognises the header of a block; the derived class supplies the operations that
/// read, each of which gives E_NOTIMPL here and leaves its out-parameters alone.
class ZO_EXPORT CBScpiBlockData : public IZOScpiBlockData, public virtual CObjectDataReference
{
public:
    /// What ParseBlockDataHeader says about a text.
    enum tagHeaderResult : int
    {
        HeaderIncomplete = 0, ///< more characters are needed
        HeaderComplete = 1,
        HeaderInvalid = 2 ///< no block begins with this text
    };

    /// Recognises the header of a block at the start of a text (IEEE 488.2 section 7.7.6).
    ///
    /// Known are "#", a digit n from 1 to 9 and n digits of length, "#0" for an indefinite length, and
    /// "#(digits)" with blanks before the digits, whose length is not known in advance either. Threads: any.
    /// @param text  what has been received; may go on behind the header
    /// @param[out] length  length of the data in bytes, -1 for an indefinite one; only written for
    ///                     HeaderComplete
    /// @return one of tagHeaderResult
    static int ParseBlockDataHeader(std::string_view text, std::int64_t& length) noexcept;

    HRESULT Read(unsigned long size, unsigned char* data, unsigned long* got) override;
    HRESULT Status(short* complete, long* length) override;
    HRESULT Discard() override;
    HRESULT
    GetStatusEx(short* complete, long* length, unsigned long* available, unsigned long* consumed) override;
    HRESULT ReadFromStream(IStream* target, unsigned long size, unsigned long* got) override;
    HRESULT ContinueRead(long timeoutMs) override;
    HRESULT InitReaderFormat(tagEnumFormatDataType type, long width, tagEnumFormatByteOrder order) override;
    HRESULT GetNextElement(VARIANT* value) override;
    HRESULT GetNextDouble(double* value) override;
    HRESULT GetNextInteger(long* value) override;
    HRESULT GetNextArray(unsigned long count, double* values, unsigned long* got) override;
    HRESULT GetNextScatteredArrays(unsigned long arrays,
                                   unsigned long count,
                                   double* const* values,
                                   unsigned long* got) override;
    HRESULT Access(unsigned char** data, unsigned long* length) override;

protected:
    // The destructor stands before what a derived class adds in the table of virtual functions.
    ~CBScpiBlockData() override = default;
};

} // namespace ZoVelkor
