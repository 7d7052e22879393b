// The manager's library operations.
#include "dictionary/dict_object_mgr.h"

DWORD CDictObjectMgr::InsertLibrary(CString& name, CString& description, int integerField,
                                    CString& text, DWORD dataDictionaryId, DWORD& dictObjectId,
                                    BOOL useGivenId) {
    return CreateItem(tessmeta::kDictLibrary, *m_pLibraries, dataDictionaryId, dictObjectId,
                      useGivenId, [&](DWORD id) {
                          return m_pLibraries->Insert(id, name, description, integerField, text, 0,
                                                      0);
                      });
}

DWORD CDictObjectMgr::InsertLibrary(DWORD nameId, DWORD descriptionId, int integerField,
                                    DWORD textId, DWORD dataDictionaryId, DWORD& dictObjectId,
                                    BOOL useGivenId) {
    return CreateItem(tessmeta::kDictLibrary, *m_pLibraries, dataDictionaryId, dictObjectId,
                      useGivenId, [&](DWORD id) {
                          return m_pLibraries->Insert(id, nameId, descriptionId, integerField,
                                                      textId, 0, 0);
                      });
}

BOOL CDictObjectMgr::UpdateLibrary(DWORD libraryId, CString& name, CString& description,
                                   int integerField, CString& text) {
    CKelDictLibrary* row = m_pLibraries->GetRow(libraryId);
    if (!row) return FALSE;
    WriteTexts(*m_pLibraries, *row, {&name, &description, &text});
    m_pLibraries->SetIntegerField(libraryId, integerField);
    return TRUE;
}

BOOL CDictObjectMgr::DeleteLibrary(DWORD libraryId) {
    return DeleteItem(*m_pLibraries, libraryId);
}

BOOL CDictObjectMgr::LibraryFields(const CKelDictLibrary* row, DWORD& libraryId, CString& name,
                                   CString& description, int& integerField, CString& text,
                                   DWORD& dictObjectId) const {
    if (!row) return FALSE;
    libraryId = row->Dictionary_Library_ID;
    ReadTexts(*m_pLibraries, *row, {&name, &description, &text});
    integerField = row->Integer_Field;
    dictObjectId = row->Dictionary_Object_ID;
    return TRUE;
}

BOOL CDictObjectMgr::GetFirstLibrary(DWORD& libraryId, CString& name, CString& description,
                                     int& integerField, CString& text, DWORD& dictObjectId) {
    return LibraryFields(ItemOfKindWalk(*m_pLibraries, FirstOfKind(tessmeta::kDictLibrary)),
                         libraryId, name, description, integerField, text, dictObjectId);
}

BOOL CDictObjectMgr::GetNextLibrary(DWORD& libraryId, CString& name, CString& description,
                                    int& integerField, CString& text, DWORD& dictObjectId) {
    return LibraryFields(ItemOfKindWalk(*m_pLibraries, NextOfKind()), libraryId, name, description,
                         integerField, text, dictObjectId);
}

CKelDictLibrary* CDictObjectMgr::GetFirstLibraryRow() {
    m_libraryRowCursor = m_pLibraries->GetFirstRowPosition();
    return GetNextLibraryRow();
}

CKelDictLibrary* CDictObjectMgr::GetNextLibraryRow() {
    return NextRowOf(*m_pLibraries, m_libraryRowCursor);
}

CKelDictLibrary* CDictObjectMgr::GetLibraryRow(DWORD libraryId) const {
    return m_pLibraries->GetRow(libraryId);
}

CKelDictLibrary* CDictObjectMgr::GetLibraryFKRow(DWORD dictObjectId) const {
    return m_pLibraries->GetDictObjIDFKRow(dictObjectId);
}

BOOL CDictObjectMgr::GetLibraryData(DWORD libraryId, CString& name, CString& description,
                                    int& integerField, CString& text) const {
    DWORD key = 0, dictObjectId = 0;
    return LibraryFields(m_pLibraries->GetRow(libraryId), key, name, description, integerField,
                         text, dictObjectId);
}

BOOL CDictObjectMgr::GetLibraryName(DWORD libraryId, CString& name) const {
    return m_pLibraries->GetName(libraryId, name);
}

BOOL CDictObjectMgr::GetLibraryDesc(DWORD libraryId, CString& description) const {
    return m_pLibraries->GetDescription(libraryId, description);
}

BOOL CDictObjectMgr::GetLibraryValue(DWORD libraryId, CString& text) const {
    return m_pLibraries->GetValue(libraryId, text);
}

int CDictObjectMgr::GetLibraryCount() const {
    return m_pLibraries->GetCount();
}

LONG CDictObjectMgr::IsDictLibraryUnique(CString& name, CString& description, int integerField,
                                         CString& text, DWORD dataDictionaryId) {
    const CKelDictLibrary* row = FirstNamedIn(*m_pLibraries, name, ScopeOf(dataDictionaryId));
    if (!row) return 0;
    const CString* const texts[] = {&description, &text};
    const bool same = TextsEqualNoCase(*m_pLibraries, *row, texts) &&
                      static_cast<int>(row->Integer_Field) == integerField;
    return same ? static_cast<LONG>(row->Dictionary_Library_ID) : -1;
}

LONG CDictObjectMgr::GetNameForUniqueDictLibrary(CString& name, CString& description,
                                                 int integerField, CString& text,
                                                 DWORD dataDictionaryId) {
    return UniqueName(name, [&] {
        return IsDictLibraryUnique(name, description, integerField, text, dataDictionaryId);
    });
}
