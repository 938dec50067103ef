#pragma once

#include <string>

namespace ZoVelkor::RemoteKernel
{

/// The four fields of *IDN? (IEEE 488.2 section 10.14). An empty field is answered as 0; commas, semicolons
/// and what is not printable ASCII are answered as blanks.
struct InstrumentIdentity
{
    std::string manufacturer;
    std::string model;
    std::string serialNumber;
    std::string firmwareLevel;
};

} // namespace ZoVelkor::RemoteKernel
