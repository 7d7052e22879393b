// Older files: deleted dictionary objects are moved to the diagram-specific data
// dictionary's domain when the file is below version 502, except in a version-501
// file with more than one data dictionary, where the user is warned instead.
#include <gtest/gtest.h>

#include "repository_test_util.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::CapturedOutput;
using tessmeta::test::SRepoModel;
using tessmeta::test::TempDir;

namespace {

struct SOldFile {
    std::string path;
    ULONG deleted = 0, modified = 0, diagram = 0;  // objects and their modification kinds
    ULONG domain = 0;                              // where the three objects were filed
};

// A model whose dictionary objects, one deleted and one modified, and a deleted
// diagram object all sit in the domain of the second data dictionary.
SOldFile WriteModel(const TempDir& dir, bool secondDictionary) {
    SOldFile old;
    old.path = dir.File(secondDictionary ? "two.zmf" : "one.zmf");
    SRepoModel m(CModelFile::Create(old.path, nullptr));
    CDictObjectMgr& dict = m.model->GetDictObjectMgr();
    old.domain = dict.GetDataDictionaryObjectDomainID(dict.GetDiagramSpecificData_Dictionary_ID());
    if (secondDictionary)
        old.domain = dict.GetDataDictionaryObjectDomainID(dict.CreateDataDictionary("Sales", ""));
    old.deleted = m.Dictionary();
    old.modified = m.Dictionary();
    old.diagram = m.Diagram();
    for (ULONG id : {old.deleted, old.modified, old.diagram})
        m.guids.SetUniqueObjectObjectDomainID(id, old.domain);
    m.repo.InsertObjectModificationRow(old.deleted, CEnhRepoObjModTable::kDeleted, 0);
    m.repo.InsertObjectModificationRow(old.modified, CEnhRepoObjModTable::kModified, 0);
    m.repo.InsertObjectModificationRow(old.diagram, CEnhRepoObjModTable::kDeleted, 0);
    EXPECT_TRUE(m.model->Save());
    return old;
}

// The model as a file of `version` would load (the load repairs in memory only).
std::unique_ptr<CModelFile> OpenAs(const std::string& path, DWORD version) {
    auto file = CZmfFile::Open(path);
    file->SetFormatVersion(version);
    EXPECT_TRUE(file->Commit());
    return CModelFile::Load(std::move(file));
}

TEST(RepositoryVersions, DeletedDictionaryObjectsOfOlderFiles) {
    TempDir dir;
    const SOldFile two = WriteModel(dir, true), one = WriteModel(dir, false);
    struct SCase {
        const SOldFile& old;
        DWORD version;
        bool warned, repaired;
    };
    const SCase cases[] = {
        {two, 501, true, false}, {one, 501, false, true},  {two, 500, false, true},
        {two, 499, false, true}, {two, 502, false, false}, {two, 530, false, false},
    };
    for (const SCase& c : cases) {
        CapturedOutput output;
        SRepoModel m(OpenAs(c.old.path, c.version));
        const std::string label = c.old.path + " as " + std::to_string(c.version);
        ASSERT_EQ(m.repo.IsDeletedDDObjFound(), 1) << label;
        if (c.warned) {
            EXPECT_EQ(output.MessageBoxes(),
                      std::vector<std::string>{
                          "This zmf file was saved in a beta version of Tessary and should not "
                          "be used with the Repository. \nPlease save the file under a "
                          "different name and re-add the diagram to the Repository."})
                << label;
        } else {
            EXPECT_TRUE(output.MessageBoxes().empty()) << label;
        }
        CDictObjectMgr& dict = m.model->GetDictObjectMgr();
        const ULONG target =
            dict.GetDataDictionaryObjectDomainID(dict.GetDiagramSpecificData_Dictionary_ID());
        EXPECT_EQ(m.guids.GetUniqueObjectObjectDomainID(c.old.deleted),
                  c.repaired ? target : c.old.domain)
            << label;
        if (c.repaired) {
            EXPECT_NE(target, c.old.domain) << label;
        }
        // Only deleted dictionary objects move.
        EXPECT_EQ(m.guids.GetUniqueObjectObjectDomainID(c.old.modified), c.old.domain) << label;
        EXPECT_EQ(m.guids.GetUniqueObjectObjectDomainID(c.old.diagram), c.old.domain) << label;
    }
}

}  // namespace
