#include "fuzz/FuzzTarget.h"

#include <cstddef>
#include <cstdint>

/// Runs the one target that this program is linked with. A finding leaves by the exception that
/// nobody catches, so that the fuzzer keeps the input and shows where it was thrown.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto& target = Tessel::Fuzz::Target::all().at(0);
    target.take({reinterpret_cast<const char*>(data), size});
    return 0;
}
