/// The handles behind which an add-on fills values and node maps on demand.
#pragma once

#include "interface/kro.h"
#include "krohost/host/line/CallbackScope.h"
#include "krohost/host/line/Journal.h"
#include "krohost/host/model/Storage.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <vector>

namespace krohost {

/// A place in the dataset whose data come on demand: a variable of a zone or, with variable 0, the zone's node map.
struct Target {
    std::int32_t zone;
    std::int32_t variable = 0;

    bool operator==(const Target&) const = default;
};

/// `zone 1, variable 2` or `zone 1`.
std::string describe(Target target);

/// Data that an add-on's callbacks load, drop and clean up, with the client record that belongs to them. One thread at
/// a time per object.
class Deferred {
public:
    Deferred(Target target, void* clientData) : target_{target}, clientData_{clientData} {}
    virtual ~Deferred() = default;
    Deferred(const Deferred&) = delete;
    Deferred& operator=(const Deferred&) = delete;

    Target target() const { return target_; }
    void* clientData() const { return clientData_; }

    /// Bytes of storage that a load takes; nothing when the number does not fit.
    std::optional<std::uint64_t> byteCount() const;

    /// Allocates the storage and has the client fill it; false when the client fails, with nothing kept. What the
    /// client broke is in the journal afterwards. Throws std::bad_alloc when the storage cannot be had.
    bool load(Journal& journal);
    bool isLoaded() const { return isLoaded_; }

    /// Drops the storage when the client agrees.
    bool unload(Journal& journal);

    /// The last call: unloads what is loaded and ends the life of the client record.
    void cleanup(Journal& journal) noexcept;

    /// The storage, during a load and while loaded: one part for a variable, one per section for a node map.
    const std::vector<Storage>& parts() const { return parts_; }

    virtual std::size_t itemByteCount() const = 0;

    /// The data's place in the budget of memory, which alone reads and writes it.
    struct Room {
        bool isTaken = false;
        bool isKept = false;
        int useCount = 0;
        std::uint64_t byteCount = 0;
        std::list<Deferred*>::iterator place = {};
    };
    Room room;

protected:
    /// Items of every part; negative when the number does not fit.
    virtual std::vector<std::int64_t> itemCounts() const = 0;
    virtual const char* callbackName(Phase phase) const = 0;
    /// Calls the client; a phase without result gives nothing.
    virtual std::optional<KroBool> callClient(Phase phase) = 0;

private:
    bool run(Phase phase, Journal& journal);
    void verifyGuards(Journal& journal) const;

    Target target_;
    void* clientData_;
    bool isLoaded_ = false;
    std::vector<Storage> parts_;
};

/// Items of one section's node list; negative when the number does not fit.
std::int64_t nodeNumberCount(std::int64_t elementCount, std::int64_t nodesPerElement);

} // namespace krohost

struct KroFieldData final : krohost::Deferred {
    struct Callbacks {
        KroDataValueLoad load;
        KroDataValueUnload unload;
        KroDataValueCleanup cleanup;
    };

    KroFieldData(krohost::Target target, FieldDataType_e storageType, std::int64_t count, Callbacks clientCallbacks,
                 void* clientRecord)
        : Deferred{target, clientRecord}, type{storageType}, valueCount{count}, callbacks{clientCallbacks} {}

    std::size_t itemByteCount() const override;

    FieldDataType_e type;
    std::int64_t valueCount;
    Callbacks callbacks;

private:
    std::vector<std::int64_t> itemCounts() const override { return {valueCount}; }
    const char* callbackName(krohost::Phase phase) const override;
    std::optional<KroBool> callClient(krohost::Phase phase) override;
};

struct KroNodeMap final : krohost::Deferred {
    struct Callbacks {
        KroDataNodeLoad load;
        KroDataNodeUnload unload;
        KroDataNodeCleanup cleanup;
    };

    /// `counts` holds the length of every section's node list.
    KroNodeMap(krohost::Target target, int bitCount, std::vector<std::int64_t> counts, Callbacks clientCallbacks,
               void* clientRecord)
        : Deferred{target, clientRecord}, nodeBitCount{bitCount}, callbacks{clientCallbacks}, counts_{
                                                                                                  std::move(counts)} {}

    std::size_t itemByteCount() const override { return nodeBitCount == 64 ? 8 : 4; }
    /// Items of a section (from 1); 0 when it does not exist.
    std::int64_t sectionItemCount(std::int32_t section) const;

    int nodeBitCount; // 32 or 64
    Callbacks callbacks;

private:
    std::vector<std::int64_t> itemCounts() const override { return counts_; }
    const char* callbackName(krohost::Phase phase) const override;
    std::optional<KroBool> callClient(krohost::Phase phase) override;

    std::vector<std::int64_t> counts_;
};
