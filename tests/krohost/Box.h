#pragma once

#include "krohost/host/runtime/Host.h"
#include "tests/krohost/callHost.h"

#include <functional>
#include <utility>

/// A host and an add-on in the test's own process. It loads one mixed zone of a hexahedron and two tetrahedra, with a
/// cell-centred variable "p" and a nodal "q", and differs from a sound one in what the test sets before the load.
struct Box {
    explicit Box(krohost::HostOptions options = {}) : host{std::move(options)} {}
    bool load() { return host.loadFiles({"a.box"}); }

    krohost::Host host;
    Arguments zone{{"Name", "wing"},
                   {"ZoneType", ZoneType_Mixed},
                   {"DeferVarCreation", 1},
                   {"DeferNodeMapCreation", 1},
                   {"StrandID", -1},
                   {"SolutionTime", 0.1},
                   {"IMax", 10},
                   {"JMax", 3},
                   {"NumSections", 2},
                   {"NumElemsPerSection", Counts{1, 2}},
                   {"CellShapePerSection", Codes{CellShape_Hexahedron, CellShape_Tetrahedron}},
                   {"GridOrderPerSection", Codes{1, 1}},
                   {"VarDataType", Codes{FieldDataType_Float, FieldDataType_Double}},
                   {"ValueLocation", Codes{ValueLocation_CellCentered, ValueLocation_Nodal}}};
    KroDataNodeLoad loadNodes = [](KroNodeMap*) { return KroBool{1}; };
    KroDataValueLoad loadP = [](KroFieldData*) { return KroBool{1}; };
    KroDataValueUnload unloadP = [](KroFieldData*) { return KroBool{1}; };
    KroDataValueCleanup cleanupP = [](KroFieldData*) {};
    std::function<void()> doInLoad = [] {};
    std::function<void()> doAfterLoad = [] {};
    const KroStringList* fileNames = nullptr; // of the load that runs

private:
    KroAddOn* addOn_ = registerLoader(
        [](auto* names, void*, void* box) {
            static_cast<Box*>(box)->fileNames = names;
            return static_cast<Box*>(box)->loadBox();
        },
        this);

    KroBool makeZone() const {
        const KroDataValueLoad loadQ = [](KroFieldData*) { return KroBool{1}; };
        return call(KroUtilDataSetCreateX, {{"LoaderName", "Box"}, {"DataSetTitle", "Box"}}) &&
               KroUtilDataSetAddVar("p") && KroUtilDataSetAddVar("q") && call(KroUtilDataSetAddZoneX, zone) &&
               KroUtilDataNodeCustomLOD(
                   1, loadNodes, [](KroNodeMap*) { return KroBool{1}; }, [](KroNodeMap*) {}, nullptr) &&
               KroUtilDataValueCustomLOD(1, 1, loadP, unloadP, cleanupP, nullptr) &&
               KroUtilDataValueCustomLOD(
                   1, 2, loadQ, loadQ, [](KroFieldData*) {}, nullptr);
    }

    KroBool loadBox() const {
        KroUtilLockStart(addOn_);
        KroUtilDataLoadStart();
        const KroBool isMade = makeZone();
        doInLoad();
        call(KroUtilDataLoadFinishX, {});
        KroUtilLockFinish(addOn_);
        doAfterLoad();
        return isMade;
    }
};
