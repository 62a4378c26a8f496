// How libFuzzer changes inputs that are documents: three times of four in a way that a document may be changed.

#include "fuzz/fuzz.h"
#include "fuzz/mutate.h"

extern "C" {

std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t byteCount, std::size_t mostByteCount);

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t byteCount, std::size_t mostByteCount,
                                    unsigned int seed) {
    const std::string_view document = fuzz::asText({data, byteCount});
    const std::string text = seed % 4 == 0 ? std::string(document) : fuzz::mutated(document, seed);
    if (text.size() > mostByteCount || text == document)
        return LLVMFuzzerMutate(data, byteCount, mostByteCount);
    return text.copy(reinterpret_cast<char*>(data), mostByteCount);
}

std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data, std::size_t byteCount, const std::uint8_t* otherData,
                                      std::size_t otherByteCount, std::uint8_t* result, std::size_t mostByteCount,
                                      unsigned int seed) {
    const std::string text =
        fuzz::crossed(fuzz::asText({data, byteCount}), fuzz::asText({otherData, otherByteCount}), seed);
    return text.size() > mostByteCount ? 0 : text.copy(reinterpret_cast<char*>(result), mostByteCount);
}
}
