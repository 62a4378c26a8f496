#include "loader/output/valueLoader.h"

#include "loader/output/loadGuard.h"

#include "loader/streams/dataArrayReader.h"

#include <new>
#include <utility>

namespace veltra::vtkfile {

namespace {

/// What the host keeps for a variable of a zone until cleanup.
struct ValueRecord {
    std::shared_ptr<const std::string> loaderName;
    std::uint16_t component;
    std::shared_ptr<const std::vector<DataArray>> arrays;
};

constexpr LoadFailureHandling failureHandling{badAsciiNumber, true};

const ValueRecord* recordOf(const KroFieldData* fieldData) {
    return static_cast<const ValueRecord*>(KroUtilDataValueGetClientData(fieldData));
}

void checkRoom(const ValueRecord& record, std::uint64_t roomCount) {
    std::uint64_t valueCount = 0;
    for (const DataArray& array : *record.arrays) {
        if (record.component >= array.numberOfComponents)
            throw IOException(missingComponent(array, record.component));
        valueCount += array.numberOfTuples; // the zone's registration has made sure that the sum does not wrap
    }
    if (valueCount != roomCount)
        throw IOException(valueCountNotAllotted(record.arrays->front(), valueCount, roomCount));
}

template <class Stored>
void fill(const ValueRecord& record, void* storage) {
    auto* dst = static_cast<Stored*>(storage);
    const FilePtr file = openFile(record.arrays->front());
    for (const DataArray& array : *record.arrays) {
        readComponent(file, array, record.component, dst);
        dst += array.numberOfTuples;
    }
}

void fillAs(FieldDataType_e type, const ValueRecord& record, void* storage) {
    switch (type) {
    case FieldDataType_Float:
        return fill<float>(record, storage);
    case FieldDataType_Double:
        return fill<double>(record, storage);
    case FieldDataType_Int32:
        return fill<std::int32_t>(record, storage);
    case FieldDataType_Int16:
        return fill<std::int16_t>(record, storage);
    case FieldDataType_Byte:
        return fill<std::uint8_t>(record, storage);
    case FieldDataType_None:
        break;
    }
    throw std::bad_alloc(); // the host has no storage for the values
}

KroBool loadValues(KroFieldData* fieldData) {
    const ValueRecord& record = *recordOf(fieldData);
    return guardedLoad(*record.loaderName, failureHandling, [&] {
        checkRoom(record, static_cast<std::uint64_t>(KroUtilDataValueGetCount(fieldData)));
        void* storage = KroUtilDataValueGetRawPtrByRef(fieldData);
        fillAs(storage ? KroUtilDataValueGetType(fieldData) : FieldDataType_None, record, storage);
    });
}

KroBool unloadValues(KroFieldData*) {
    return 1;
}

void cleanUpValues(KroFieldData* fieldData) {
    delete recordOf(fieldData);
}

} // namespace

bool registerValueLoader(std::shared_ptr<const std::string> loaderName, std::int32_t zone, std::int32_t variable,
                         std::uint16_t component, std::shared_ptr<const std::vector<DataArray>> arrays) noexcept {
    std::unique_ptr<ValueRecord> record(new (std::nothrow)
                                            ValueRecord{std::move(loaderName), component, std::move(arrays)});
    if (!record ||
        KroUtilDataValueCustomLOD(zone, variable, loadValues, unloadValues, cleanUpValues, record.get()) != 1)
        return false;
    record.release(); // the host's until cleanup
    return true;
}

} // namespace veltra::vtkfile
