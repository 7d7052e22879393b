// tessmeta info: the data dictionary section.
#include <cstdio>
#include <string>

#include "command.h"

namespace tessmeta::tool {
namespace {

constexpr int kListed = 20;  // items listed per section; the rest are counted

void PrintAttachmentTypes(CDictObjectMgr& dictionary) {
    const int count = dictionary.GetAttachmentTypeCount();
    if (!count) return;
    std::printf("\nattachment types (%d):\n", count);
    int listed = 0;
    for (POSITION pos = dictionary.GetFirstAttTypeRowPosition(); pos && listed < kListed;
         ++listed) {
        const CKelAttachmentType* type = dictionary.GetNextAttTypeRow(pos);
        std::string validFor;
        for (const CKelValidAttachmentType* valid =
                 dictionary.GetFirstValidAttTypeAttTypeIDFKRow(type->Attachment_Type_ID);
             valid; valid = dictionary.GetNextValidAttTypeAttTypeIDFKRow()) {
            if (!validFor.empty()) validFor += ',';
            validFor += std::to_string(valid->Meta_Table_ID);
        }
        int attachments = 0;
        for (const CKelAttachment* row =
                 dictionary.GetFirstAttachmentFKRow(type->Attachment_Type_ID);
             row; row = dictionary.GetNextAttachmentFKRow())
            ++attachments;
        std::printf("  %-6u %-30s %6d attachments  valid for meta tables %s\n",
                    type->Attachment_Type_ID, type->GetName().GetString(), attachments,
                    validFor.empty() ? "(none)" : validFor.c_str());
    }
    if (count > listed) std::printf("  ... and %d more\n", count - listed);
}

// Libraries, triggers or reusable procedures: first, next give rows in table order.
template <class First, class Next>
void PrintCodeItems(const char* sort, int count, First&& first, Next&& next) {
    if (!count) return;
    std::printf("\n%s (%d):\n", sort, count);
    int listed = 0;
    for (const auto* row = first(); row && listed < kListed; row = next(), ++listed)
        std::printf("  %-6u %-30s %s\n", row->GetTechKey(), row->GetName().GetString(),
                    static_cast<LONG>(row->Integer_Field) == 1 ? "(system)" : "");
    if (count > listed) std::printf("  ... and %d more\n", count - listed);
}

}  // namespace

void PrintDictionaryInfo(CModelFile& model) {
    CDictObjectMgr& dictionary = model.GetDictObjectMgr();
    std::printf("\ndata dictionaries (%d):\n", dictionary.GetNumOfDataDictionary());
    for (POSITION pos = dictionary.GetDataDictionaryStartPosition(); pos;) {
        const CKelDataDictionary* row = dictionary.GetNextDataDictionary(pos);
        CString name;
        dictionary.GetDataDictionaryName(row, name);
        std::printf("  %-6u %-30s %8d items%s\n", row->Data_Dictionary_ID, name.GetString(),
                    dictionary.GetDictObjectCountIn(row->Data_Dictionary_ID),
                    dictionary.IsDiagramSpecificDataDictionary(row) ? "  (diagram specific)" : "");
    }
    std::printf("\ndictionary items per kind:\n");
    for (DWORD code = 1; code <= kDictObjectKindCount; ++code) {
        if (const int count = dictionary.GetDictObjectCount(code))
            std::printf("  %-26s %10d\n", DictObjectKindName(code), count);
    }
    PrintAttachmentTypes(dictionary);
    PrintCodeItems(
        "libraries", dictionary.GetLibraryCount(), [&] { return dictionary.GetFirstLibraryRow(); },
        [&] { return dictionary.GetNextLibraryRow(); });
    PrintCodeItems(
        "triggers", dictionary.GetTriggerCount(), [&] { return dictionary.GetFirstTriggerRow(); },
        [&] { return dictionary.GetNextTriggerRow(); });
}

}  // namespace tessmeta::tool
