/* The platform interface: every operation of the host that an add-on may call, and every callback that it hands over.
 *
 * Plain C types and opaque handles only. The host process defines the functions; an add-on leaves them undefined and
 * has them resolved when it is loaded. No exception may cross this interface in either direction.
 *
 * Results: a KroBool is exactly 1 on success and 0 on failure. After a failure the host remembers a sentence that says
 * why; KroUtilPostLastErrorMessage shows it. Numbers of zones, variables, sections and list items count from 1.
 *
 * Strings are UTF-8 and end in a zero byte. The host copies every string and array that it is given; what it gives out
 * it also owns, and each entry says until when.
 *
 * Thread tags, one on every entry:
 *   [main thread]               the thread on which the host called the add-on's entry point
 *   [main thread, host locked]  as above, between KroUtilLockOn and KroUtilLockOff or KroUtilLockStart and ...Finish
 *   [load callback]             inside a load-on-demand callback, on whatever thread that runs, for its handle only
 *   [any thread]                no restriction
 */
#ifndef KRO_H
#define KRO_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t KroBool;

typedef struct KroAddOn KroAddOn;           /* one registered add-on; lives until the host ends */
typedef struct KroStringList KroStringList; /* an ordered list of strings */
typedef struct KroArgList KroArgList;       /* an ordered list of named, typed arguments */
typedef struct KroFieldData KroFieldData;   /* the values of one variable in one zone */
typedef struct KroNodeMap KroNodeMap;       /* the connectivity of one zone */

typedef void (*KroFunction)(void);

/* How the host stores the values of a variable. 0 stands for a variable that a zone does not supply. */
typedef enum {
    FieldDataType_None = 0,
    FieldDataType_Float = 1,  /* 32-bit */
    FieldDataType_Double = 2, /* 64-bit */
    FieldDataType_Int32 = 3,
    FieldDataType_Int16 = 4,
    FieldDataType_Byte = 5
} FieldDataType_e;

/* Where the values of a variable live. */
typedef enum { ValueLocation_CellCentered = 0, ValueLocation_Nodal = 1, ValueLocation_None = 255 } ValueLocation_e;

typedef enum {
    ZoneType_Ordered = 0,
    ZoneType_Triangle = 1,
    ZoneType_Quadrilateral = 2,
    ZoneType_Tetrahedron = 3,
    ZoneType_Brick = 4,
    ZoneType_LineSegment = 5,
    ZoneType_Mixed = 8 /* cells in sections, each of one shape and grid order */
} ZoneType_e;

typedef enum {
    CellShape_Line = 0,
    CellShape_Triangle = 1,
    CellShape_Quadrilateral = 2,
    CellShape_Tetrahedron = 3,
    CellShape_Hexahedron = 4,
    CellShape_Pyramid = 5,
    CellShape_Prism = 6,
    CellShape_None = 255 /* a point */
} CellShape_e;

/* Element type of an array argument. */
typedef enum { KroArrayItem_Int32 = 1, KroArrayItem_Int64 = 2 } KroArrayItem_e;

enum {
    Kro_AddOnApiLevel = 110,
    Kro_LoaderCallbackVersion = 2,
    Kro_StateChangeCallbackApi = 1,
    Kro_StateChangeModeAllChanges = 2, /* call for every change, as it happens */
    Kro_StateChangeShutdown = 15,      /* the host ends; it makes no loader callback after this */
    Kro_MaxSectionsPerZone = 16
};

/* ---- Add-ons and the host's lock --------------------------------------------------------------------------------- */

/* Takes and gives back the host's global lock during the entry point. Calls must pair and do not nest. [main thread] */
void KroUtilLockOn(void);
void KroUtilLockOff(void);

/* Takes and gives back the host's lock on behalf of a registered add-on, around a load. Calls must pair. [main thread]
 */
void KroUtilLockStart(KroAddOn* addOn);
void KroUtilLockFinish(KroAddOn* addOn);

/* Makes an add-on known. Never null. [main thread, host locked] */
KroAddOn* KroUtilAddOnRegister(int32_t apiLevel, const char* name, const char* version, const char* author);

/* Replays a load: `instructions` are those that the loader recorded, valid during the call; `clientData` is the one
 * registered. Returns 1 when the data were loaded. [main thread] */
typedef KroBool (*KroLoaderCallback)(const KroStringList* instructions, void* clientData);

/* Loads the files that the user picked, in the order picked. `reserved` carries nothing. [main thread] */
typedef KroBool (*KroLoaderSelectedCallback)(const KroStringList* fileNames, void* reserved, void* clientData);

/* Registers a data loader. Arguments: "LoaderName" and "FileNameExtensions" (strings), "LoaderCallbackVersion" (2),
 * "LoaderCallback" and "LoaderSelectedCallback" (functions), "ClientData" (pointer, stays the add-on's),
 * "AllowMultiFileSelection" and "LoaderAdvancedOptions" (0 or 1). [main thread, host locked] */
KroBool KroUtilImportAddLoaderX(const KroArgList* arguments);

/* Told of a change in the host's state by its code. [main thread] */
typedef void (*KroStateChangeCallback)(int32_t stateChange);

/* Registers a state-change callback. Arguments: "CallbackFunction" (function), "StateChangeMode" and
 * "StateChangeCallbackAPI" (integers). [main thread, host locked] */
KroBool KroUtilStateChangeAddCallbackX(const KroArgList* arguments);

/* ---- String lists ------------------------------------------------------------------------------------------------ */

/* A new, empty list, owned by the caller; null when memory is exhausted. [any thread] */
KroStringList* KroUtilStringListAlloc(void);
/* Frees the list and sets the pointer to null. [any thread] */
void KroUtilStringListDealloc(KroStringList** list);
void KroUtilStringListClear(KroStringList* list);                               /* [any thread] */
KroBool KroUtilStringListAppendString(KroStringList* list, const char* string); /* [any thread] */
int64_t KroUtilStringListGetCount(const KroStringList* list);                   /* [any thread] */
/* The item with this number, valid until the list changes; null for a number outside 1 to the count. [any thread] */
const char* KroUtilStringListGetRawStringPtr(const KroStringList* list, int64_t number);

/* ---- Argument lists ---------------------------------------------------------------------------------------------- */

/* A new, empty list, owned by the caller; null when memory is exhausted. [any thread] */
KroArgList* KroUtilArgListAlloc(void);
/* Frees the list and sets the pointer to null. [any thread] */
void KroUtilArgListDealloc(KroArgList** list);

/* Each appends one argument; a name may be there only once in a list. [any thread] */
KroBool KroUtilArgListAppendString(KroArgList* list, const char* name, const char* value);
KroBool KroUtilArgListAppendInt(KroArgList* list, const char* name, int64_t value);
KroBool KroUtilArgListAppendDouble(KroArgList* list, const char* name, double value);
KroBool KroUtilArgListAppendFunction(KroArgList* list, const char* name, KroFunction value);
KroBool KroUtilArgListAppendArbParam(KroArgList* list, const char* name, void* value);
/* `items` points to `itemCount` integers of the given type, which the host copies; it may be null when there are none.
 */
KroBool KroUtilArgListAppendArray(KroArgList* list, const char* name, KroArrayItem_e itemType, int64_t itemCount,
                                  const void* items);

/* ---- The data-load bracket --------------------------------------------------------------------------------------- */

/* Opens a load that makes a new dataset. Each is closed by one KroUtilDataLoadFinishX, also after a failure.
 * [main thread, host locked] */
void KroUtilDataLoadStart(void);

/* Closes the load. Optional arguments: "ResetStyle", "ShowInitialPlot", "PromptForOptions" (0 or 1).
 * [main thread, host locked] */
KroBool KroUtilDataLoadFinishX(const KroArgList* options);

/* Records how the current dataset was loaded, so that the host can replay it. [main thread, host locked] */
KroBool KroUtilImportSetLoaderInstr(const char* loaderName, const KroStringList* instructions);

/* Reads one time from each file name: the last number of its stem, with a fraction or exponent where it has one.
 * `times` has room for as many values as the list has items. Fails, and writes nothing, unless every name has a number
 * and there is at least one name. [main thread, host locked] */
KroBool KroUtilExtractTimesFromFileNames(const KroStringList* fileNames, double* times);

/* ---- Dataset and zones ------------------------------------------------------------------------------------------- */

/* Replaces the current dataset, whose client records are cleaned up first, by one without variables and zones; only
 * while a data load is open. Arguments: "LoaderName" and "DataSetTitle" (strings). [main thread, host locked] */
KroBool KroUtilDataSetCreateX(const KroArgList* arguments);

/* Both are 0 when there is no dataset. [main thread, host locked] */
int32_t KroUtilDataSetGetNumVars(void);
int32_t KroUtilDataSetGetNumZones(void);

/* Adds a variable that no zone supplies yet and returns its number, or 0 on failure. Names may repeat.
 * [main thread, host locked] */
int32_t KroUtilDataSetAddVar(const char* name);

/* The variable's name, valid until the dataset changes; null for an unknown number. [main thread, host locked] */
const char* KroUtilVarGetName(int32_t variable);

/* Where zones supply the variable (the first zone that does decides); ValueLocation_None when none does.
 * [main thread, host locked] */
ValueLocation_e KroUtilVarGetValueLocation(int32_t variable);

/* Adds a zone, which takes the number KroUtilDataSetGetNumZones then returns. Arguments:
 *   "Name"                 string
 *   "ZoneType"             a ZoneType_e
 *   "DeferVarCreation"     1: values come from load-on-demand callbacks
 *   "DeferNodeMapCreation" 1: the same for the node map
 *   "StrandID"             zones of one strand are one thing at successive times; -1: the host decides
 *   "SolutionTime"         double
 *   "IMax"                 number of nodes (ordered zone: points), 1 or more
 *   "JMax"                 number of cells, 1 or more (ordered zone: 1)
 *   "KMax"                 ordered zone only: 1
 * and for mixed zones only, the last three as arrays with one entry per section:
 *   "NumSections"          1 to Kro_MaxSectionsPerZone
 *   "NumElemsPerSection"   64-bit; their sum is "JMax"
 *   "CellShapePerSection"  32-bit, CellShape_e
 *   "GridOrderPerSection"  32-bit, 1 to 4
 * and with one entry per variable of the dataset:
 *   "VarDataType"          32-bit, FieldDataType_e
 *   "ValueLocation"        32-bit, ValueLocation_e
 * [main thread, host locked] */
KroBool KroUtilDataSetAddZoneX(const KroArgList* arguments);

/* Attaches a text to a zone under a name, replacing an earlier one. [main thread, host locked] */
KroBool KroUtilZoneSetAuxData(int32_t zone, const char* name, const char* value);

/* ---- Load on demand ---------------------------------------------------------------------------------------------- */

/* Load fills the storage behind the handle and returns 1, or reports why not and returns 0; the host may ask again.
 * Unload agrees to the storage being dropped. Cleanup is the last call for a client record and ends its life. The host
 * runs callbacks of different handles at once on several threads, but never two for one handle. */
typedef KroBool (*KroDataValueLoad)(KroFieldData* fieldData);
typedef KroBool (*KroDataValueUnload)(KroFieldData* fieldData);
typedef void (*KroDataValueCleanup)(KroFieldData* fieldData);
typedef KroBool (*KroDataNodeLoad)(KroNodeMap* nodeMap);
typedef KroBool (*KroDataNodeUnload)(KroNodeMap* nodeMap);
typedef void (*KroDataNodeCleanup)(KroNodeMap* nodeMap);

/* Has the values of a zone's variable loaded by callbacks. On success `clientData` belongs to the host until it calls
 * cleanup; on failure it stays the caller's. The variable's "VarDataType" in the zone must not be
 * FieldDataType_None. [main thread, host locked] */
KroBool KroUtilDataValueCustomLOD(int32_t zone, int32_t variable, KroDataValueLoad load, KroDataValueUnload unload,
                                  KroDataValueCleanup cleanup, void* clientData);

/* The same for a zone's node map; an ordered zone has none. [main thread, host locked] */
KroBool KroUtilDataNodeCustomLOD(int32_t zone, KroDataNodeLoad load, KroDataNodeUnload unload,
                                 KroDataNodeCleanup cleanup, void* clientData);

/* The client record, in all three callbacks. [load callback] */
void* KroUtilDataValueGetClientData(const KroFieldData* fieldData);
/* The storage: one value per node or per cell of the zone. Valid during the load. [load callback] */
void* KroUtilDataValueGetRawPtrByRef(KroFieldData* fieldData);
FieldDataType_e KroUtilDataValueGetType(const KroFieldData* fieldData); /* [load callback] */
int64_t KroUtilDataValueGetCount(const KroFieldData* fieldData);        /* values there is room for [load callback] */

void* KroUtilDataNodeGetClientData(const KroNodeMap* nodeMap); /* [load callback] */
/* Zero when node numbers are stored in 32 bits, else 64. [load callback] */
int32_t KroUtilDataNodeGetRawItemType(const KroNodeMap* nodeMap);
/* The node list of a section, cell after cell, node numbers from 0; null when the section does not exist or its numbers
 * are stored in the other width. A zone that is not mixed has the one section 1. Valid during the load.
 * [load callback] */
int32_t* KroUtilDataNodeSectionGetRawPtrByRef(KroNodeMap* nodeMap, int32_t section);
int64_t* KroUtilDataNodeSectionGetRawPtrByRef64(KroNodeMap* nodeMap, int32_t section);
/* Node numbers there is room for in the section; 0 when it does not exist. [load callback] */
int64_t KroUtilDataNodeSectionGetCount(const KroNodeMap* nodeMap, int32_t section);

/* ---- Progress, interrupts and messages --------------------------------------------------------------------------- */

/* Shows a progress display; paired with KroUtilProgressFinish. [main thread, host locked] */
void KroUtilProgressStart(const char* title);
void KroUtilProgressText(const char* text); /* [main thread, host locked] */
/* Shows how much is done, 0 to 1; 0 when the user asks to stop. [main thread, host locked] */
KroBool KroUtilProgressUpdate(double fraction);
void KroUtilProgressFinish(void); /* [main thread, host locked] */

/* 1 once the user has asked to stop the current operation. [any thread] */
KroBool KroUtilInterruptIsSet(void);

/* Shows an error. [any thread] */
void KroUtilDialogErrMsg(const char* message);

/* Shows the error of the host operation that failed last. [main thread, host locked] */
void KroUtilPostLastErrorMessage(void);

#ifdef __cplusplus
}
#endif

#endif
