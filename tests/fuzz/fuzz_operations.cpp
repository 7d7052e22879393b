// A sequence of edits across the managers, decoded from the input: objects made
// and deleted (with their cascades), texts set, renamed and removed, unique-name
// loops, marks and removals, repository flags, domains, data dictionaries,
// properties, saves that purge or empty. The model is then saved, reopened and
// compared with the one in memory; the check must find nothing wrong, and saving
// the reopened model again must write the same tables.
#include <vector>

#include "fuzz_support.h"
#include "model/model_check.h"
#include "support/store_checks.h"

using namespace tessmeta;
using namespace tessmeta::fuzz;

namespace {

constexpr const char* kTypes[] = {"Entity", "Attribute", "Relationship", "Index",
                                  "View",   "Model",     "Diagram",      "Entity Display"};
constexpr const char* kUsages[] = {"Entity Name",       "Entity Definition", "Attribute Name",
                                   "Relationship Name", "Model Name",        "View Note"};
constexpr const char* kWords[] = {"ORDER", "order", "", "CUSTOMER", "ORDER_1", "x"};

class CInput {
  public:
    CInput(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    bool More() const { return m_at < m_size; }
    unsigned Byte() { return m_at < m_size ? m_data[m_at++] : 0; }
    template <std::size_t N>
    const char* Pick(const char* const (&list)[N]) {
        return list[Byte() % N];
    }
    // A short text: a common word (names collide) or bytes of the input.
    CString Text() {
        const unsigned length = Byte() % 12;
        if (length < 6) return CString(kWords[length]);
        CString text;
        for (unsigned i = 0; i < length; ++i)
            text += static_cast<char>(Byte() % 95 + 32);
        return text;
    }

  private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

class CEditor {
  public:
    CEditor(CModelFile& model, CInput& in) : m_model(model), m_in(in) {}

    void Run() {
        while (m_in.More())
            Step(m_in.Byte() % 16);
    }

  private:
    // An object made here, or any small id (existing or not).
    int Object() {
        const unsigned pick = m_in.Byte();
        if (pick < 200 && !m_objects.empty()) return m_objects[pick % m_objects.size()];
        return static_cast<int>(pick % 64);
    }
    // An object that exists now (0 when there is none): the managers take object
    // ids on trust from their callers.
    int Existing() {
        const int id = Object();
        return m_model.GetGuidMgr().IsUniqueObjectIdValid(id) ? id : 0;
    }
    int Usage() { return m_model.GetNameSpaceMgr().GetStringUsageTypeId(m_in.Pick(kUsages)); }
    // One of the objects made here, its texts gone first, as a host deletes.
    int WithoutTexts() {
        const int id = m_objects[m_in.Byte() % m_objects.size()];
        DeleteTexts(id);
        return id;
    }

    void Step(unsigned op) {
        CGuidMgr& guids = m_model.GetGuidMgr();
        CNameSpaceMgr& names = m_model.GetNameSpaceMgr();
        CDictObjectMgr& dictionary = m_model.GetDictObjectMgr();
        CPropertyMgr& properties = m_model.GetPropertyMgr();
        switch (op) {
            case 0:
            case 1: {
                const int owner = Object();
                const int id = guids.GetNewUniqueId(CString(m_in.Pick(kTypes)),
                                                    static_cast<ULONG>(owner), 0, 0);
                if (id) m_objects.push_back(id);
                break;
            }
            case 2:
                if (!m_objects.empty()) {
                    const int id = WithoutTexts();
                    guids.DeleteObject(id, static_cast<int>(m_in.Byte() % 2));
                }
                break;
            case 3:
            case 4:
                if (const int id = Existing()) names.AddOrUpdateString(m_in.Text(), id, Usage());
                break;
            case 5:
                names.DeleteString(Object(), Usage());
                break;
            case 6: {  // a unique name: NAME, NAME_1, NAME_2, ... until free
                const CString base = m_in.Text();
                CString name = base;
                for (int n = 1; names.GetStringIdFromStringNoCase(name) && n < 50; ++n)
                    name.Format("%s_%d", base.GetString(), n);
                if (const int id = Existing()) names.AddString(name, id, Usage());
                break;
            }
            case 7:  // marks made by hand, removal by the manager; a host removes
                     // the texts of every marked object (some may have got texts
                     // since they were marked) just before
                if (!m_objects.empty()) {
                    m_marked.push_back(m_objects[m_in.Byte() % m_objects.size()]);
                    guids.MarkForRemoval(static_cast<ULONG>(m_marked.back()), 1);
                }
                if (m_in.Byte() % 2) {
                    for (const int id : m_marked)
                        DeleteTexts(id);
                    m_marked.clear();
                    guids.RemoveMarkedObjects();
                }
                break;
            case 8:
                guids.FlagOnRepoStatus(static_cast<unsigned>(Object()), m_in.Byte() % 8,
                                       m_in.Byte() % 2 != 0);
                break;
            case 9: {
                const int id = Existing();
                CString guid;
                guids.GetObjectGUID(static_cast<unsigned>(id), guid);
                guids.CreateObjectDomain(static_cast<ULONG>(id), m_in.Text(), "DIAGRAM", guid, 0);
                break;
            }
            case 10:
                if (m_in.Byte() % 2)
                    m_dictionaries.push_back(dictionary.CreateDataDictionary(m_in.Text(), "d"));
                else if (!m_dictionaries.empty())
                    dictionary.DeleteDataDictionary(
                        m_dictionaries[m_in.Byte() % m_dictionaries.size()]);
                break;
            case 11: {
                const ULONG type = properties.InsertPropertyType(m_in.Text(), "t");
                m_properties.push_back(properties.DefineProperty(
                    type, m_in.Text(), "p", static_cast<EPropertyDataType>(m_in.Byte() % 5)));
                break;
            }
            case 12:
                if (!m_properties.empty())
                    properties.InsertProperty(m_in.Byte() % 4, static_cast<ULONG>(Existing()),
                                              m_properties[m_in.Byte() % m_properties.size()],
                                              m_in.Text());
                break;
            case 13:
                if (!m_properties.empty()) {
                    const ULONG property = m_properties[m_in.Byte() % m_properties.size()];
                    if (m_in.Byte() % 2)
                        properties.DeletePropertyDefinition(property);
                    else
                        properties.ClearProperty(m_in.Byte() % 4, static_cast<ULONG>(Object()),
                                                 property);
                }
                break;
            case 14:
                guids.SetAllRepoStatusFlag(m_in.Byte() % 8);
                break;
            default: {  // a save in the middle: purging, emptying the modifications
                SModelSaveOptions options;
                options.purgeStrings = static_cast<int>(m_in.Byte() % 2);
                options.emptyModifications = static_cast<int>(m_in.Byte() % 2);
                Require(m_model.Save(options), "a save failed: " + m_model.GetLastError());
            }
        }
    }

    void DeleteTexts(int id) {
        CNameSpaceMgr& names = m_model.GetNameSpaceMgr();
        for (const char* usage : kUsages)
            names.DeleteString(id, names.GetStringUsageTypeId(usage));
    }

    CModelFile& m_model;
    CInput& m_in;
    std::vector<int> m_objects;
    std::vector<int> m_marked;  // marked for removal, not yet removed
    std::vector<DWORD> m_dictionaries;
    std::vector<ULONG> m_properties;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string first = ScratchFile("first.zmf"), second = ScratchFile("second.zmf");
    RemoveModelFile(first);
    RemoveModelFile(second);
    auto model = CModelFile::CreateInMemory();
    CInput in(data, size);
    CEditor(*model, in).Run();
    Require(model->SaveAs(first), "save failed: " + model->GetLastError());
    const std::string inMemory = ModelDigest(*model);
    model.reset();

    std::string error;
    auto reopened = CModelFile::Open(first, &error);
    Require(reopened != nullptr, "the saved model does not reopen: " + error);
    Require(ModelDigest(*reopened) == inMemory, "the reopened model differs from the saved one");
    const SCheckReport report = CheckModelFile(reopened->GetFile());
    Require(report.ErrorCount() == 0,
            "check finds " + std::to_string(report.ErrorCount()) +
                " problems, first: " + (report.findings.empty() ? "" : report.findings[0].detail));
    Require(reopened->SaveAs(second), "re-save failed: " + reopened->GetLastError());
    auto again = CZmfFile::Open(first, &error);
    const std::string difference = test::StoreDifference(*again, reopened->GetFile());
    Require(difference.empty(), "saving the reopened model changes it: " + difference);
    return 0;
}
