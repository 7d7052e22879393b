// tessmeta info: the data dictionary section.
#include <cstdio>

#include "command.h"

namespace tessmeta::tool {

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
}

}  // namespace tessmeta::tool
