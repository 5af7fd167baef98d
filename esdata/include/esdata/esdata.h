/*
 * EsDataAccess — catalog access C API, embedded implementation over SQLite.
 *
 * Conventions
 * - Every handle is an opaque pointer owned by the store. The caller never frees a handle,
 *   with one exception: an element object from pool_CreateObject is freed by object_Delete.
 * - Handles stay valid while their catalog is open (until esx_CloseCatalog), with one
 *   exception: the store holds the schemas (attributes) of a bounded number of tables, those
 *   used last, and lets go of the others' attribute handles; a table gives new ones when asked
 *   again (table_GetAttribute, table_FindAttribute). An attribute handle let go is never
 *   given again: passing it is refused like a handle of a closed catalog, never read as
 *   another attribute. Ask a table for its attributes where they are used rather than keep
 *   them across a walk of other tables. A handle of
 *   something deleted (table_DeleteStdSize, folder_DeleteChildFolder,
 *   projections_DeleteProjection) is dead from that call on; passing it is safe (the call
 *   fails as on a null handle) but gives no data. Every handle has a kind: a handle kept past
 *   esx_CloseCatalog, or given where another kind is expected (a table as a folder), is
 *   refused the same way without being read, and esx_LastError says why.
 * - Another program may write the same catalog file: what it commits is seen by the calls
 *   made here from a few milliseconds after its commit on (the caches are dropped when the
 *   database's change counter moved).
 * - Every function accepts null handles and null texts: a null text reads as an empty text,
 *   a null handle makes the call return 0, false, a null handle or an empty value.
 * - Texts are NUL-terminated UTF-16 (char16_t). A text returned by a getter belongs to the
 *   handle it was asked of and stays valid until the same getter is called again on the same
 *   handle, or until the handle dies. Copy it before asking again. What an element holds
 *   (values, model, representation, fragments, specifications) is cached for the 256
 *   elements read last: its texts and bytes also lapse once 256 other elements have been
 *   read. The handles themselves stay valid until the catalog is closed.
 * - A provider (and everything below it) may be used from one thread at a time; calls on one
 *   catalog from several threads are serialised inside the store, so a worker thread may
 *   write while the GUI thread waits.
 * - Indexes are zero-based; an index out of range gives a null handle or 0.
 *
 * The functions prefixed esx_ are the embedded store's own (opening and closing catalog
 * files, transactions). The real closed library does not offer them: callers that must also
 * work against it look them up at run time and do without when they are absent.
 */
#ifndef ESDATA_ESDATA_H
#define ESDATA_ESDATA_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(ESDATA_BUILDING)
#define ESDATA_API __declspec(dllexport)
#else
#define ESDATA_API __declspec(dllimport)
#endif
#else
#define ESDATA_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#else
#include <stdbool.h>
#include <uchar.h>
#endif

typedef struct es_pool es_pool_t;
typedef struct es_provider es_provider_t;
typedef struct es_packet es_packet_t;
typedef struct es_folder es_folder_t;
typedef struct es_table es_table_t;
typedef struct es_stdsize es_stdsize_t;
typedef struct es_attribute es_attribute_t;
typedef struct es_model es_model_t;
typedef struct es_projections es_projections_t;
typedef struct es_projection es_projection_t;
typedef struct es_spec es_spec_t;
typedef struct es_object es_object_t;

/* Attribute type codes. */
enum
{
    ES_ATTR_INT = 1,
    ES_ATTR_REAL = 2,
    ES_ATTR_TEXT = 3
};

/* The tagged value of an attribute in an element or an object. */
typedef enum es_value_kind
{
    ES_VALUE_EMPTY = 0,
    ES_VALUE_INT = 1,
    ES_VALUE_REAL = 2,
    ES_VALUE_TEXT = 3
} es_value_kind;

typedef struct es_value
{
    es_value_kind kind;
    int32_t i;         /* ES_VALUE_INT */
    double d;          /* ES_VALUE_REAL */
    const char16_t* s; /* ES_VALUE_TEXT; owned by the element (or object) asked, valid until
                          its next value read */
} es_value;

/* ---- pool ------------------------------------------------------------------------------
 * A pool is the open catalog whose library identifier is libraryId ("orvik.aec.engsystx"
 * for a database named with "user_tx", and so on). Null when no such catalog is open. */
ESDATA_API es_pool_t* esGetLibraryProviderPool(const char16_t* libraryId);
ESDATA_API es_packet_t* pool_FindPacket(es_pool_t* pool, const char16_t* packetName);
/* A run-time instance of element in the pool; the caller frees it with object_Delete. */
ESDATA_API es_object_t* pool_CreateObject(es_pool_t* pool, es_stdsize_t* element,
                                          const char16_t* libraryId);

/* ---- provider -------------------------------------------------------------------------- */
ESDATA_API uint32_t provider_GetPacketCount(es_provider_t* provider);
ESDATA_API es_packet_t* provider_GetPacket(es_provider_t* provider, uint32_t i);
/* Adds a packet; null when the name is empty or already taken. */
ESDATA_API es_packet_t* provider_AddPacket(es_provider_t* provider, const char16_t* name);
ESDATA_API const char16_t* provider_GetDatabaseName(es_provider_t* provider);
/* Runs a command document (XML text). Only "create_spec" is known: it replaces the
 * specification records of the element it names. Anything else gives false. */
ESDATA_API bool provider_RunCommand(es_provider_t* provider, const char16_t* commandXml);

/* ---- packet ---------------------------------------------------------------------------- */
ESDATA_API const char16_t* packet_GetName(es_packet_t* packet);
ESDATA_API es_folder_t* packet_GetRootFolder(es_packet_t* packet);
ESDATA_API es_provider_t* packet_GetProvider(es_packet_t* packet);
ESDATA_API es_stdsize_t* packet_FindStdSize(es_packet_t* packet, const char16_t* id);
/* The distinct values of the attribute named attributeName over all elements of the packet,
 * as text, in ascending order (numbers in numeric order, before texts), joined with "|".
 * Owned by the packet. */
ESDATA_API const char16_t* packet_GetAttributeUniqueValues(es_packet_t* packet,
                                                           const char16_t* attributeName);

/* ---- folder ---------------------------------------------------------------------------- */
ESDATA_API const char16_t* folder_GetName(es_folder_t* folder);
ESDATA_API es_packet_t* folder_GetPacket(es_folder_t* folder);
ESDATA_API es_folder_t* folder_GetParentFolder(es_folder_t* folder);
ESDATA_API uint32_t folder_GetChildFolderCount(es_folder_t* folder);
ESDATA_API es_folder_t* folder_GetChildFolder(es_folder_t* folder, uint32_t i);
/* Adds a child folder (with its empty table); null when the name is empty or taken. */
ESDATA_API es_folder_t* folder_AddChildFolder(es_folder_t* folder, const char16_t* name);
/* Deletes child with everything below it (folders, tables, elements). */
ESDATA_API bool folder_DeleteChildFolder(es_folder_t* folder, es_folder_t* child);
ESDATA_API es_table_t* folder_GetTable(es_folder_t* folder);

/* ---- table ----------------------------------------------------------------------------- */
ESDATA_API es_folder_t* table_GetFolder(es_table_t* table);
ESDATA_API uint32_t table_GetAttributeCount(es_table_t* table);
ESDATA_API es_attribute_t* table_GetAttribute(es_table_t* table, uint32_t i);
ESDATA_API es_attribute_t* table_FindAttribute(es_table_t* table, const char16_t* name);
/* Adds an attribute at the end of the schema, numbered one above the highest number in the
 * table (old number equal to it); null when the name is empty or taken. */
ESDATA_API es_attribute_t* table_AddAttribute(es_table_t* table, const char16_t* name,
                                              const char16_t* description, uint32_t type);
ESDATA_API uint32_t table_GetStdSizeCount(es_table_t* table);
ESDATA_API es_stdsize_t* table_GetStdSize(es_table_t* table, uint32_t i);
/* Adds an element; null when id is empty or already used in the same packet. */
ESDATA_API es_stdsize_t* table_AddStdSize(es_table_t* table, const char16_t* id);
ESDATA_API bool table_DeleteStdSize(es_table_t* table, es_stdsize_t* element);

/* ---- stdsize (element) ----------------------------------------------------------------- */
ESDATA_API const char16_t* stdsize_GetID(es_stdsize_t* element);
ESDATA_API const char16_t* stdsize_GetType(es_stdsize_t* element);
ESDATA_API bool stdsize_SetType(es_stdsize_t* element, const char16_t* type);
ESDATA_API es_table_t* stdsize_GetTable(es_stdsize_t* element);
/* Reads the value of attribute (of the element's table); false and an empty value when the
 * attribute is not of this element's table. */
ESDATA_API bool stdsize_GetValue(es_stdsize_t* element, es_attribute_t* attribute, es_value* out);
ESDATA_API bool stdsize_GetValueByName(es_stdsize_t* element, const char16_t* name, es_value* out);
ESDATA_API bool stdsize_SetValueI(es_stdsize_t* element, es_attribute_t* attribute, int32_t value);
ESDATA_API bool stdsize_SetValueD(es_stdsize_t* element, es_attribute_t* attribute, double value);
ESDATA_API bool stdsize_SetValueS(es_stdsize_t* element, es_attribute_t* attribute,
                                  const char16_t* value);
ESDATA_API es_model_t* stdsize_GetModel(es_stdsize_t* element);
ESDATA_API es_projections_t* stdsize_GetProjections(es_stdsize_t* element);
ESDATA_API uint32_t stdsize_GetSpecificationCount(es_stdsize_t* element);
ESDATA_API es_spec_t* stdsize_GetSpecification(es_stdsize_t* element, uint32_t i);
/* The representation blob: *data points at size bytes owned by the element, valid until the
 * next call of this function or of the setter on it. Returns the size (0: none). */
ESDATA_API size_t stdsize_GetRepresentationData(es_stdsize_t* element, const void** data);
/* Replaces the blob with a copy of size bytes at data (size 0 removes it). */
ESDATA_API bool stdsize_SetRepresentationData(es_stdsize_t* element, const void* data, size_t size);

/* ---- attribute ------------------------------------------------------------------------- */
ESDATA_API int32_t attribute_GetNumber(es_attribute_t* attribute);
ESDATA_API bool attribute_SetNumber(es_attribute_t* attribute, int32_t number);
ESDATA_API int32_t attribute_GetOldNumber(es_attribute_t* attribute);
ESDATA_API bool attribute_SetOldNumber(es_attribute_t* attribute, int32_t number);
ESDATA_API const char16_t* attribute_GetName(es_attribute_t* attribute);
ESDATA_API const char16_t* attribute_GetDescription(es_attribute_t* attribute);
ESDATA_API uint32_t attribute_GetType(es_attribute_t* attribute);
ESDATA_API const char16_t* attribute_GetVarName(es_attribute_t* attribute);
ESDATA_API bool attribute_SetVarName(es_attribute_t* attribute, const char16_t* varName);
ESDATA_API const char16_t* attribute_GetMeasure(es_attribute_t* attribute);
ESDATA_API bool attribute_SetMeasure(es_attribute_t* attribute, const char16_t* measure);
ESDATA_API const char16_t* attribute_GetFormula(es_attribute_t* attribute);
ESDATA_API bool attribute_SetFormula(es_attribute_t* attribute, const char16_t* formula);

/* ---- model ----------------------------------------------------------------------------- */
ESDATA_API bool model_Clear(es_model_t* model);
ESDATA_API bool model_IsEmpty(es_model_t* model);
/* Path of the stored copy of the model file (in the content-addressed folder beside the
 * database); empty when the model is empty. */
ESDATA_API const char16_t* model_GetModelFile(es_model_t* model);
ESDATA_API const char16_t* model_GetModelName(es_model_t* model);
/* Icon bytes: *data points at the returned number of bytes, owned by the model, valid until
 * the next call on it. */
ESDATA_API size_t model_GetIconData(es_model_t* model, const void** data);
/* MD5 of the model file's content, lower-case hexadecimal. */
ESDATA_API const char16_t* model_GetDigest(es_model_t* model);
ESDATA_API int32_t model_GetVersion(es_model_t* model);
/* Stores a copy of modelFile (and the bytes of iconFile as the icon, when it names a
 * readable file) and sets name and version. False when modelFile cannot be read. */
ESDATA_API bool model_SetModelEx(es_model_t* model, const char16_t* modelFile,
                                 const char16_t* iconFile, const char16_t* name, int32_t version);

/* ---- projections / projection ---------------------------------------------------------- */
ESDATA_API uint32_t projections_GetProjectioCount(es_projections_t* list);
ESDATA_API es_projection_t* projections_GetProjection(es_projections_t* list, uint32_t i);
/* Appends a projection: a stored copy of fragmentFile, the bytes of iconFile as its icon
 * (when readable), name, description, projection type and view type. Null when fragmentFile
 * cannot be read. */
ESDATA_API es_projection_t*
projections_AddProjectionEx(es_projections_t* list, const char16_t* name,
                            const char16_t* fragmentFile, const char16_t* iconFile, uint32_t type,
                            const char16_t* description, uint32_t viewType);
ESDATA_API bool projections_DeleteProjection(es_projections_t* list, es_projection_t* projection);
ESDATA_API const char16_t* projection_GetName(es_projection_t* projection);
ESDATA_API const char16_t* projection_GetDescription(es_projection_t* projection);
ESDATA_API uint32_t projection_GetType(es_projection_t* projection);
ESDATA_API uint32_t projection_GetViewType(es_projection_t* projection);
ESDATA_API const char16_t* projection_GetFragmentFile(es_projection_t* projection);
ESDATA_API size_t projection_GetIconData(es_projection_t* projection, const void** data);
ESDATA_API const char16_t* projection_GetDigest(es_projection_t* projection);

/* ---- spec ------------------------------------------------------------------------------ */
ESDATA_API const char16_t* spec_LibName(es_spec_t* spec);
ESDATA_API int32_t spec_Style(es_spec_t* spec);
ESDATA_API int32_t spec_FirstPart(es_spec_t* spec);
ESDATA_API int32_t spec_SecondPart(es_spec_t* spec);
ESDATA_API uint32_t spec_ColumnCount(es_spec_t* spec);
ESDATA_API int32_t spec_ColumnNumber(es_spec_t* spec, uint32_t i);
ESDATA_API const char16_t* spec_ColumnFormula(es_spec_t* spec, uint32_t i);

/* ---- object ---------------------------------------------------------------------------- */
ESDATA_API es_stdsize_t* object_GetStdSize(es_object_t* object);
/* An object starts with the values of its element; its own writes stay in the object. */
ESDATA_API bool object_GetValueByName(es_object_t* object, const char16_t* name, es_value* out);
ESDATA_API bool object_SetValueI(es_object_t* object, es_attribute_t* attribute, int32_t value);
ESDATA_API bool object_SetValueD(es_object_t* object, es_attribute_t* attribute, double value);
ESDATA_API bool object_SetValueS(es_object_t* object, es_attribute_t* attribute,
                                 const char16_t* value);
ESDATA_API void object_Delete(es_object_t* object);

/* ---- drawing update -------------------------------------------------------------------- */
/* Brings the catalog item file itemFile up to date for this session: false (with
 * esx_LastError) when the file is missing or cannot be read; otherwise records it, once,
 * among the updated items that esx_UpdatedRtw lists, and gives true. */
ESDATA_API bool esUpdateRtw(const char16_t* itemFile);

/* ---- embedded store only --------------------------------------------------------------- */
/* Opens the catalog database at path, creating it when create is true, under the database
 * name dbName (for example "user_tx"; only used when the file is created, otherwise the
 * stored name is kept). Returns its provider, or null when the file is not a catalog or
 * cannot be opened; esx_LastError then tells why. A catalog opened twice gives the same
 * provider. The files of models and fragments live in "<path>.files" beside it, each named
 * by the MD5 of the bytes stored; a stored file goes when the last model or projection
 * naming it goes (once the deletion is committed), except while a file stored ahead
 * (esx_StoreFileAhead) in this process waits for the write that will name it. */
ESDATA_API es_provider_t* esx_OpenCatalog(const char16_t* path, const char16_t* dbName,
                                          bool create);
/* Opens an existing catalog for reading only: nothing is written to it or beside it, so a
 * catalog whose file or folder the user may only read (or a share) opens. Every call that
 * writes fails with ESX_ERROR_WRITE and esx_LastError saying the catalog is read-only. When
 * the file or its folder cannot be written, the catalog is read as unchanging: what another
 * program writes to it meanwhile is not seen. A catalog already open for writing in this
 * process is opened once more, apart from it. Null with esx_LastError when it is no catalog. */
ESDATA_API es_provider_t* esx_OpenCatalogForReading(const char16_t* path);
/* Closes the catalog: every handle of it is freed and must not be used again, except element
 * objects, which stay safe to pass (they give empty results) and still need object_Delete. */
ESDATA_API void esx_CloseCatalog(es_provider_t* provider);
/* Path of the database file. */
ESDATA_API const char16_t* esx_CatalogPath(es_provider_t* provider);
/* Adds an attribute at the end of the schema with every field given in one write: the same
 * catalog as table_AddAttribute followed by attribute_SetNumber, attribute_SetOldNumber,
 * attribute_SetVarName, attribute_SetMeasure and attribute_SetFormula. Null texts count as
 * empty. Null when the name is empty or taken. Other catalog access implementations do not
 * have it: callers look it up at run time and fall back to those calls. */
ESDATA_API es_attribute_t* esx_AddAttributeEx(es_table_t* table, const char16_t* name,
                                              const char16_t* description, uint32_t type,
                                              int32_t number, int32_t oldNumber,
                                              const char16_t* varName, const char16_t* measure,
                                              const char16_t* formula);
/* Transaction scope: between Begin and Commit every write of this thread is all or nothing;
 * Rollback undoes them (and drops the handles created inside; what was deleted inside lives
 * again under the same handles). Scopes do not nest. While a scope is open the catalog is
 * held by the thread that began it: calls from other threads wait until it ends, and only
 * that thread can commit or roll back. A scope still open at esx_CloseCatalog is rolled
 * back. A process killed inside a scope leaves none of its writes behind. */
ESDATA_API bool esx_Begin(es_provider_t* provider);
ESDATA_API bool esx_Commit(es_provider_t* provider);
ESDATA_API bool esx_Rollback(es_provider_t* provider);
/* Stores the file at path in the catalog's file folder ahead of a write that will name it
 * (model_SetModelEx, projections_AddProjectionEx and the like) and gives the stored file's
 * path, which that write may be given instead of path and then finds stored. With move the
 * file is moved rather than copied where the file system allows, and path is gone afterwards.
 * The catalog's data do not change; a stored file that no write comes to name stays unused in
 * the folder. It takes no lock of the catalog: another thread may call it while a transaction
 * scope holds the catalog. Null when the file cannot be read or stored; the text returned is
 * owned by the store and valid until the next call on this thread. Other catalog access
 * implementations do not have it; callers look it up at run time. */
ESDATA_API const char16_t* esx_StoreFileAhead(es_provider_t* provider, const char16_t* path,
                                              bool move);
/* Removes each of the count files at paths (stored files, as esx_StoreFileAhead gives them)
 * that no model and no projection of the catalog names: files stored ahead of writes that
 * were undone or never came. Files outside the catalog's file folder are left alone. It holds
 * the catalog's write lock while it looks and removes, so that no writer, in this process or
 * another, comes to name a file in between; inside a transaction scope of this thread the
 * scope's own writes count. A file stored ahead for a write still to come counts as unused:
 * call it when no such write is pending. Returns how many files it removed (0 and
 * esx_LastError on failure). Other catalog access implementations do not have it; callers
 * look it up at run time. */
ESDATA_API uint32_t esx_RemoveUnusedFiles(es_provider_t* provider, const char16_t* const* paths,
                                          uint32_t count);
/* The items recorded by esUpdateRtw in this process, joined with "|" (owned by the store,
 * valid until the next call). */
ESDATA_API const char16_t* esx_UpdatedRtw(void);
/* Why the last call of this thread failed, or an empty text. Owned by the store, valid until
 * the next call on this thread. */
ESDATA_API const char16_t* esx_LastError(void);

/* What kind of failure the last call of this thread met (0 when it did not fail):
 * - ESX_ERROR_LOCKED: another program holds the catalog for writing. Each call waits for it
 *   a few seconds (3 s), once, then fails; esx_LastError then starts with the text
 *   "Каталог занят другой программой (заблокирован для записи)". A caller that writes many
 *   elements stops at the first such failure rather than wait again for every element.
 * - ESX_ERROR_DAMAGED: the catalog file has damaged pages.
 * - ESX_ERROR_WRITE: a write did not reach the disk (full disk, file-size limit, read-only
 *   file or folder, failed copy, sync or rename of a stored file). Nothing of the failed call
 *   is kept; inside a transaction scope the caller rolls the scope back.
 * - ESX_ERROR_FAILED: anything else (bad arguments, dead handles, missing files to read).
 * Opening a catalog makes the process ignore SIGXFSZ, so that a write past the file-size
 * limit fails as ESX_ERROR_WRITE instead of ending the process. */
enum
{
    ESX_ERROR_NONE = 0,
    ESX_ERROR_FAILED = 1,
    ESX_ERROR_LOCKED = 2,
    ESX_ERROR_DAMAGED = 3,
    ESX_ERROR_WRITE = 4
};
ESDATA_API int esx_LastErrorCode(void);
/* Checks the catalog's pages (PRAGMA quick_check): true when whole. False with
 * esx_LastErrorCode ESX_ERROR_DAMAGED and esx_LastError telling what is damaged, so that a
 * writer can refuse the catalog before it writes. Reads the whole file: call it once before
 * a long run of writes, not per element. */
ESDATA_API bool esx_CheckIntegrity(es_provider_t* provider);
/* Test seam: the n-th write from now (counted over every catalog of the process) fails as a
 * write error (ESX_ERROR_WRITE) as if the disk had refused it; 0 turns the seam off. A write
 * is one statement that changes a catalog or one file stored in a catalog's file folder; one
 * write fails, the ones after it succeed again. A process started with the environment
 * variable ESDATA_FAIL_WRITE=n behaves as if it had called esx_TestFailWrite(n) before its
 * first catalog was opened. */
ESDATA_API void esx_TestFailWrite(uint32_t n);

#ifdef __cplusplus
}
#endif

#endif /* ESDATA_ESDATA_H */
