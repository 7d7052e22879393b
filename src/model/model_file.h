// CModelFile: one open model, the composition root that a host program (the
// tessmeta command, a test, an application) uses instead of wiring the managers by
// hand.
//
// It opens or creates the record store, reads the format version, builds the
// managers in load order (the identity manager's Init first, then the name space,
// then the managers that look up their usage types by name), exposes them, saves
// every manager in the same order with one commit at the end, and gives the
// record-store tables back. Later managers plug in by adding their construction to
// Load and their save and release to Save.
#pragma once

#include <memory>
#include <string>

#include "dictionary/dict_object_mgr.h"
#include "identity/global_id_maps.h"
#include "identity/guid_mgr.h"
#include "layout/auto_layout_data_mgr.h"
#include "metadata/meta_class_member_table.h"
#include "metadata/meta_table_table.h"
#include "metadata/object_prop_override_mgr.h"
#include "metadata/property_mgr.h"
#include "namespace/name_space_mgr.h"
#include "references/ref_object_mgr.h"
#include "repository/delay_checkout_table.h"
#include "repository/repo_table_manager.h"
#include "schema/schema_object_mgr.h"
#include "views/view_meta_data_mgr.h"
#include "zmflib/zmf_file.h"

namespace tessmeta {

struct SModelLoadOptions {
    int keepGuidMap = 1;             // keep the unique objects' GUID map
    unsigned int objectBuckets = 0;  // 0: sized from the stored size figure
    unsigned int usageBuckets = 0;   // 0: idem
    unsigned int stringBuckets = 0;  // 0: idem
    int stringsOnly = 0;             // name space: strings only, no usages
    int buildRoleIndex = 0;          // name space: index usages by role
    int deferUsageLoad = 0;          // name space: load usages on first use
    // Load the name space on a second thread, through a second connection, while
    // the object identity loads (where the store and the machine allow, and not
    // with deferUsageLoad; the result is the same either way).
    int parallelRead = 1;
};

struct SModelSaveOptions {
    int writeUsages = 1;
    int purgeStrings = 0;                   // drop strings no usage keeps
    CGlobalIdMaps* globalIdMaps = nullptr;  // not owned
    int newIdentity = 0;
    int keepIdentity = 0;
    int emptyModifications = 0;  // repository: drop every modification row
    int keepModifications = 0;   // repository: leave the stored modification rows as they are
};

class CModelFile {
  public:
    static constexpr DWORD kCurrentFormatVersion = 530;

    // A new model file with what a new model gets: an object definition for every
    // meta-class the library knows (ids 1 to 74 in the order of
    // identity/object_types.def), the built-in usage types, the dictionary-object
    // kinds, the diagram-specific data dictionary ("Main"), the constant layout
    // tables, format version 530.
    // Fails if `path` exists.
    static std::unique_ptr<CModelFile> Create(const std::string& path, std::string* error);
    // The same model kept in memory only (tests, scratch work).
    static std::unique_ptr<CModelFile> CreateInMemory();
    // Opens and loads a model file; older format versions are upgraded in memory as
    // the managers load them (saving writes version 530).
    static std::unique_ptr<CModelFile> Open(const std::string& path, std::string* error,
                                            const SModelLoadOptions& options = {});
    // Loads the model of an open record store (the model takes it over).
    static std::unique_ptr<CModelFile> Load(std::unique_ptr<CZmfFile> file,
                                            const SModelLoadOptions& options = {});

    ~CModelFile();
    CModelFile(const CModelFile&) = delete;
    CModelFile& operator=(const CModelFile&) = delete;

    CZmfFile& GetFile() { return *m_file; }
    // The format version the file had when it was loaded.
    DWORD GetLoadedFormatVersion() const { return m_loadedVersion; }
    CGuidMgr& GetGuidMgr() { return *m_guids; }
    CNameSpaceMgr& GetNameSpaceMgr() { return *m_names; }
    CRefObjectMgr& GetRefObjectMgr() { return *m_refs; }
    CDictObjectMgr& GetDictObjectMgr() { return *m_dictionary; }
    CAutoLayoutDataMgr& GetAutoLayoutDataMgr() { return *m_layout; }
    CViewMetaDataMgr& GetViewMetaDataMgr() { return *m_views; }
    CRepoTableManager& GetRepoTableManager() { return *m_repository; }
    CEnhDelayCheckoutTable& GetDelayCheckoutTable() { return *m_delayedCheckouts; }
    // Metadata (docs/metadata.md): the meta tables, their members, properties and
    // colour and font overrides; and the schema code objects.
    CEnhMetaTableTbl& GetMetaTableTbl() { return *m_metaTables; }
    CEnhMetaClassMemberTbl& GetMetaClassMemberTbl() { return *m_members; }
    CPropertyMgr& GetPropertyMgr() { return *m_properties; }
    CObjectPropOverrideMgr& GetObjectPropOverrideMgr() { return *m_overrides; }
    CSchemaObjectMgr& GetSchemaObjectMgr() { return *m_schema; }

    // Saves every manager into the model's own file as format version 530 and
    // commits. False (with GetLastError) when the record store failed.
    bool Save(const SModelSaveOptions& options = {});
    // Saves into a new file at `path` (which must not exist); the model then lives
    // on in that file.
    bool SaveAs(const std::string& path, const SModelSaveOptions& options = {});

    const std::string& GetLastError() const { return m_lastError; }

  private:
    explicit CModelFile(std::unique_ptr<CZmfFile> file);
    // With a read lane, part of the load reads through it on a helper thread.
    void LoadManagers(const SModelLoadOptions& options, std::unique_ptr<CZmfReadLane> lane);
    // What a model made from nothing gets beyond its loaded tables.
    void InitNewModel();
    void LoadMetadataManagers();
    bool SaveInto(CZmfFile& file, const SModelSaveOptions& options);
    void ReleaseStorageTables();

    std::unique_ptr<CZmfFile> m_file;
    DWORD m_loadedVersion;
    // Declared after the file: destroyed first, while the file still exists.
    std::unique_ptr<CGuidMgr> m_guids;
    std::unique_ptr<CNameSpaceMgr> m_names;
    std::unique_ptr<CRefObjectMgr> m_refs;
    std::unique_ptr<CDictObjectMgr> m_dictionary;  // uses m_refs: destroyed before it
    // After the managers they borrow: destroyed before them.
    std::unique_ptr<CAutoLayoutDataMgr> m_layout;
    std::unique_ptr<CViewMetaDataMgr> m_views;
    // Handed to m_guids, which never calls them while it is destroyed.
    std::unique_ptr<CRepoTableManager> m_repository;
    std::unique_ptr<CEnhDelayCheckoutTable> m_delayedCheckouts;
    std::unique_ptr<CEnhMetaTableTbl> m_metaTables;
    std::unique_ptr<CEnhMetaClassMemberTbl> m_members;
    std::unique_ptr<CPropertyMgr> m_properties;  // declared after the tables it borrows
    std::unique_ptr<CObjectPropOverrideMgr> m_overrides;
    std::unique_ptr<CSchemaObjectMgr> m_schema;
    std::string m_lastError;
};

// Writes the object definitions a new model gets (see CModelFile::Create) into the
// record store; used when a model file is created.
bool WriteInitialObjectDefinitions(CZmfFile& file);

}  // namespace tessmeta
