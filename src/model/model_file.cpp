#include "model/model_file.h"

#include <exception>
#include <optional>
#include <system_error>
#include <thread>

#include "platform/huge_block.h"

#include "zmflib/rows.h"

namespace tessmeta {
namespace {

// The meta-class names of a new model, in the order of object_types.def.
constexpr const char* kMetaClassNames[] = {
#define TESS_OBJECT_TYPE(getter, name, sets) name,
#include "identity/object_types.def"
#undef TESS_OBJECT_TYPE
};

}  // namespace

bool WriteInitialObjectDefinitions(CZmfFile& file) {
    CTableBase* table = file.GetEmptyTable("ObjectDefinition");
    if (!table) return false;
    table->SetSizeEstimate(static_cast<LONG>(std::size(kMetaClassNames)));
    ULONG id = 0;
    for (const char* name : kMetaClassNames) {
        CObjectDefinitionBase row(++id);
        row.Name = name;
        if (!table->Insert(&row)) return false;
    }
    return file.Commit();
}

CModelFile::CModelFile(std::unique_ptr<CZmfFile> file)
    : m_file(std::move(file)), m_loadedVersion(m_file->GetFormatVersion()) {}

CModelFile::~CModelFile() = default;

std::unique_ptr<CModelFile> CModelFile::Create(const std::string& path, std::string* error) {
    auto file = CZmfFile::Create(path, kCurrentFormatVersion, error);
    if (!file) return nullptr;
    if (!WriteInitialObjectDefinitions(*file)) {
        if (error) *error = file->GetLastError();
        return nullptr;
    }
    auto model = Load(std::move(file));
    model->InitNewModel();
    if (!model->Save()) {
        if (error) *error = model->GetLastError();
        return nullptr;
    }
    return model;
}

std::unique_ptr<CModelFile> CModelFile::CreateInMemory() {
    auto file = CZmfFile::OpenMemory(kCurrentFormatVersion);
    WriteInitialObjectDefinitions(*file);
    auto model = Load(std::move(file));
    model->InitNewModel();
    model->Save();
    return model;
}

std::unique_ptr<CModelFile> CModelFile::Open(const std::string& path, std::string* error,
                                             const SModelLoadOptions& options) {
    auto file = CZmfFile::Open(path, error);
    if (!file) return nullptr;
    auto model = Load(std::move(file), options);
    // A read failure during the load ends a table early; the model would be
    // incomplete, so it is refused.
    if (model->GetFile().HasError()) {
        if (error) *error = model->GetFile().GetLastError();
        return nullptr;
    }
    return model;
}

std::unique_ptr<CModelFile> CModelFile::Load(std::unique_ptr<CZmfFile> file,
                                             const SModelLoadOptions& options) {
    std::unique_ptr<CModelFile> model(new CModelFile(std::move(file)));
    model->GetFile().BeginBulkRead();
    // Usages read on after the load keep their cursor: it must be the file's own.
    std::unique_ptr<CZmfReadLane> lane;
    if (options.parallelRead && !options.deferUsageLoad && std::thread::hardware_concurrency() > 1)
        lane = model->GetFile().OpenReadLane();
    // Loading on one thread, the load's fresh memory is faulted in on a second core
    // meanwhile; loading on two, both cores load (the faulting helper would only
    // take turns with them).
    std::optional<tessmeta::CHugeBlockWarmer> warmer;
    if (!lane) warmer.emplace();
    model->LoadManagers(options, std::move(lane));
    model->GetFile().EndBulkRead();
    return model;
}

namespace {

// Runs `here` on this thread and, meanwhile, `aside` on a helper thread that reads
// through `lane`. Without a lane or a thread both run here, `here` first. A
// failure of either is rethrown once both have ended.
template <class Here, class Aside>
void RunSideBySide(std::unique_ptr<CZmfReadLane> lane, Here&& here, Aside&& aside) {
    std::exception_ptr asideFailure;
    std::thread helper;
    if (lane) {
        try {
            helper = std::thread([&] {
                try {
                    const CZmfReadLane::CEntry entry(*lane);
                    aside();
                } catch (...) {
                    asideFailure = std::current_exception();
                }
            });
        } catch (const std::system_error&) {
            lane.reset();  // no thread to be had: read in turn
        }
    }
    if (!helper.joinable()) {
        here();
        aside();
        return;
    }
    try {
        here();
    } catch (...) {
        helper.join();
        throw;
    }
    helper.join();
    lane.reset();  // the lane's rows and error become the file's
    if (asideFailure) std::rethrow_exception(asideFailure);
}

}  // namespace

void CModelFile::LoadManagers(const SModelLoadOptions& options,
                              std::unique_ptr<CZmfReadLane> lane) {
    m_guids = std::make_unique<CGuidMgr>(m_file.get(), options.keepGuidMap);
    m_names = std::make_unique<CNameSpaceMgr>(m_file.get());
    // The name space, the largest part of a model, needs nothing of the rest and
    // none of the rest reads its tables; the metadata needs the object identity
    // only.
    RunSideBySide(
        std::move(lane),
        [&] {
            m_guids->Init(options.objectBuckets, m_loadedVersion);
            LoadMetadataManagers();
        },
        [&] {
            m_names->Init(options.usageBuckets, options.stringBuckets, options.stringsOnly,
                          options.buildRoleIndex, options.deferUsageLoad);
        });
    m_refs = std::make_unique<CRefObjectMgr>(m_names.get(), m_guids.get(), m_file.get());
    m_refs->Init();
    m_dictionary = std::make_unique<CDictObjectMgr>(m_names.get(), m_guids.get(), m_file.get(),
                                                    m_refs.get(), m_loadedVersion);
    m_dictionary->Init();
    m_dictionary->CleanupInvalidDictionaryObjectIDs();
    m_layout = std::make_unique<CAutoLayoutDataMgr>(m_file.get(), m_guids.get());
    m_layout->Init();
    m_views = std::make_unique<CViewMetaDataMgr>(m_names.get(), m_guids.get(), m_file.get());
    m_views->Init();
    m_repository = std::make_unique<CRepoTableManager>(m_file.get(), m_guids.get(),
                                                       m_dictionary.get(), m_loadedVersion);
    m_delayedCheckouts = std::make_unique<CEnhDelayCheckoutTable>(m_file.get(), nullptr);
    m_delayedCheckouts->Init(0);
    m_guids->SetRepoTableMgr(m_repository.get());
    m_guids->SetEnhDelayedCheckOutTable(m_delayedCheckouts.get());
    m_schema = std::make_unique<CSchemaObjectMgr>(m_names.get(), m_guids.get(), m_file.get());
    m_schema->Init(0);
}

void CModelFile::LoadMetadataManagers() {
    CZmfFile* file = m_file.get();
    m_metaTables = std::make_unique<CEnhMetaTableTbl>(file);
    m_metaTables->Init(0);
    m_members = std::make_unique<CEnhMetaClassMemberTbl>(file, m_guids.get());
    m_members->Init(0);
    m_properties =
        std::make_unique<CPropertyMgr>(file, m_guids.get(), m_metaTables.get(), m_members.get());
    m_properties->Init(0);
    m_overrides = std::make_unique<CObjectPropOverrideMgr>(file, m_guids.get());
    m_overrides->Init(0);
}

void CModelFile::InitNewModel() {
    m_dictionary->CreateDiagramSpecificDataDictionary(CString());
}

bool CModelFile::SaveInto(CZmfFile& file, const SModelSaveOptions& options) {
    file.ClearError();
    file.SetFormatVersion(kCurrentFormatVersion);
    m_guids->Save(&file, options.globalIdMaps, options.newIdentity, options.keepIdentity);
    m_names->Save(&file, options.writeUsages, options.purgeStrings);
    m_refs->Save(&file);
    m_dictionary->Save(&file);
    m_layout->Save(&file);
    m_views->Save(&file);
    m_repository->Save(&file, options.emptyModifications, options.keepModifications);
    m_delayedCheckouts->Save(&file);
    m_metaTables->Save(&file);
    m_members->Save(&file);
    m_properties->Save(&file);
    m_overrides->Save(&file);
    m_schema->Save(&file);
    // A failed insert shows in the file's error; the transaction then must not be
    // committed half-written.
    const bool ok = !file.HasError() && file.Commit();
    ReleaseStorageTables();
    if (!ok) {
        m_lastError = file.GetLastError();
        file.Rollback();
    }
    return ok;
}

void CModelFile::ReleaseStorageTables() {
    m_guids->ReleaseStorageTables(0);
    m_names->ReleaseStorageTables(0);
    m_refs->ReleaseStorageTables();
    m_dictionary->ReleaseStorageTables();
    m_layout->ReleaseStorageTables(0);
    m_views->ReleaseStorageTables(0);
    m_repository->ReleaseStorageTables();
    if (*m_delayedCheckouts && m_delayedCheckouts->GetFile())
        m_delayedCheckouts->GetFile()->ReleaseTable(m_delayedCheckouts->GetTablePtrAddr(), 0);
    ReleaseSavedTable(*m_metaTables, 0);
    ReleaseSavedTable(*m_members, 0);
    m_properties->ReleaseStorageTables(0);
    m_overrides->ReleaseStorageTables(0);
    m_schema->ReleaseStorageTables(0);
}

bool CModelFile::Save(const SModelSaveOptions& options) {
    return SaveInto(*m_file, options);
}

bool CModelFile::SaveAs(const std::string& path, const SModelSaveOptions& options) {
    std::string error;
    auto target = CZmfFile::Create(path, kCurrentFormatVersion, &error);
    if (!target) {
        m_lastError = error;
        return false;
    }
    // Keys allocated in this model must stay unique in the new file.
    m_file->GetIdentityMgr()->ForEachCounter(
        [&](int kind, ULONG value) { target->GetIdentityMgr()->SetKeyValue(kind, value); });
    if (!SaveInto(*target, options)) return false;
    m_file = std::move(target);
    return true;
}

}  // namespace tessmeta
