// The built-in string usage types, in the order a new model file numbers them
// (1 to 121), each with the stem of its cached-id accessor on CNameSpaceMgr:
//
//     int Get<Stem>UsageId() const
//
// The stem is the usage-type name with its spaces removed, except for two names
// that have short accessors of their own:
//     "Dictionary Library Value"  GetDictLibValueUsageId
//     "Display Label Singular"    GetDisLblSUsageId
// So "Entity Name" is GetEntityNameUsageId, "DbPackage Body Value" is
// GetDbPackageBodyValueUsageId, "Default" is GetDefaultUsageId.
//
// This list is the only place the names and stems are written down; the usage-type
// table, the id cache and the accessors are generated from it. Entries are never
// reordered: the order decides the ids of a new model file.
#pragma once

#define TESSMETA_STRING_USAGE_TYPES(X)                                              \
    X(EntityName, "Entity Name")                                                    \
    X(TableName, "Table Name")                                                      \
    X(EntityDefinition, "Entity Definition")                                        \
    X(EntityNote, "Entity Note")                                                    \
    X(EntityOwner, "Entity Owner")                                                  \
    X(DisLblS, "Display Label Singular")                                            \
    X(DisplayLabelPlural, "Display Label Plural")                                   \
    X(RowValueExpression, "Row Value Expression")                                   \
    X(EntityType, "Entity Type")                                                    \
    X(UniqueRolename, "Unique Rolename")                                            \
    X(Rolename, "Rolename")                                                         \
    X(AttributeNote, "Attribute Note")                                              \
    X(AttributeDefinition, "Attribute Definition")                                  \
    X(AttributeName, "Attribute Name")                                              \
    X(ColumnName, "Column Name")                                                    \
    X(FullRolename, "Full Rolename")                                                \
    X(UniqueColumnName, "Unique Column Name")                                       \
    X(RelationshipName, "Relationship Name")                                        \
    X(VerbPhrase, "Verb Phrase")                                                    \
    X(InversePhrase, "Inverse Phrase")                                              \
    X(RelationshipDefinition, "Relationship Definition")                            \
    X(RelationshipNote, "Relationship Note")                                        \
    X(RelationshipType, "Relationship Type")                                        \
    X(ParentConstraintType, "Parent Constraint Type")                               \
    X(ParentCardinality, "Parent Cardinality")                                      \
    X(ChildCardinality, "Child Cardinality")                                        \
    X(ParentOptionality, "Parent Optionality")                                      \
    X(ChildOptionality, "Child Optionality")                                        \
    X(ParentInsert, "Parent Insert")                                                \
    X(ParentUpdate, "Parent Update")                                                \
    X(ParentDelete, "Parent Delete")                                                \
    X(ChildInsert, "Child Insert")                                                  \
    X(ChildUpdate, "Child Update")                                                  \
    X(ChildDelete, "Child Delete")                                                  \
    X(InsertChildFormType, "Insert Child Form Type")                                \
    X(UpdateChildFormType, "Update Child Form Type")                                \
    X(ModelName, "Model Name")                                                      \
    X(ViewModelName, "View Model Name")                                             \
    X(IndexName, "Index Name")                                                      \
    X(IndexDefaultName, "Index Default Name")                                       \
    X(IsUnique, "Is Unique")                                                        \
    X(IndexType, "Index Type")                                                      \
    X(KeyType, "Key Type")                                                          \
    X(HashSizeType, "Hash Size Type")                                               \
    X(IgnoreDuplicateKey, "Ignore Duplicate Key")                                   \
    X(DuplicateRow, "Duplicate Row")                                                \
    X(NoSort, "No Sort")                                                            \
    X(SortOrdering, "Sort Ordering")                                                \
    X(DomainName, "Domain Name")                                                    \
    X(DomainColumnName, "Domain Column Name")                                       \
    X(DiagramName, "Diagram Name")                                                  \
    X(Author, "Author")                                                             \
    X(Company, "Company")                                                           \
    X(VersionNo, "Version No")                                                      \
    X(Copyright, "Copyright")                                                       \
    X(DiagramDefinition, "Diagram Definition")                                      \
    X(UnificationOption, "Unification Option")                                      \
    X(FileName, "File Name")                                                        \
    X(CheckConstraintName, "Check Constraint Name")                                 \
    X(CheckConstraintText, "Check Constraint Text")                                 \
    X(UserDataType, "User Data Type")                                               \
    X(DataTypeId, "Data Type Id")                                                   \
    X(Default, "Default")                                                           \
    X(Rule, "Rule")                                                                 \
    X(DefaultName, "Default Name")                                                  \
    X(RuleName, "Rule Name")                                                        \
    X(DefaultBaseName, "Default Base Name")                                         \
    X(DefaultBaseText, "Default Base Text")                                         \
    X(RuleBaseName, "Rule Base Name")                                               \
    X(RuleBaseText, "Rule Base Text")                                               \
    X(CopyrightYear, "Copyright Year")                                              \
    X(ViewDefinition, "View Definition")                                            \
    X(ViewName, "View Name")                                                        \
    X(ViewNote, "View Note")                                                        \
    X(ViewOwner, "View Owner")                                                      \
    X(DbTriggerName, "DbTrigger Name")                                              \
    X(DbTriggerOwner, "DbTrigger Owner")                                            \
    X(DbTriggerDescription, "DbTrigger Description")                                \
    X(DbTriggerValue, "DbTrigger Value")                                            \
    X(ProcName, "Proc Name")                                                        \
    X(ProcOwner, "Proc Owner")                                                      \
    X(ProcDescription, "Proc Description")                                          \
    X(ProcValue, "Proc Value")                                                      \
    X(DbPackageName, "DbPackage Name")                                              \
    X(DbPackageOwner, "DbPackage Owner")                                            \
    X(DbPackageDescription, "DbPackage Description")                                \
    X(DbPackageHeaderValue, "DbPackage Header Value")                               \
    X(DbPackageBodyValue, "DbPackage Body Value")                                   \
    X(DictionaryTriggerName, "Dictionary Trigger Name")                             \
    X(DictionaryTriggerDescription, "Dictionary Trigger Description")               \
    X(DictionaryTriggerValue, "Dictionary Trigger Value")                           \
    X(DictionaryLibraryName, "Dictionary Library Name")                             \
    X(DictionaryLibraryDescription, "Dictionary Library Description")               \
    X(DictLibValue, "Dictionary Library Value")                                     \
    X(LogicalRolename, "Logical Rolename")                                          \
    X(ReusableProcedureName, "Reusable Procedure Name")                             \
    X(ReusableProcedureDescription, "Reusable Procedure Description")               \
    X(ReusableProcedureValue, "Reusable Procedure Value")                           \
    X(DataDictionaryName, "Data Dictionary Name")                                   \
    X(DataDictionaryDescription, "Data Dictionary Description")                     \
    X(StorageObjectName, "Storage Object Name")                                     \
    X(StorageObjectOwner, "Storage Object Owner")                                   \
    X(StorageObjectDescription, "Storage Object Description")                       \
    X(StorageObjectValue, "Storage Object Value")                                   \
    X(DomainDescription, "Domain Description")                                      \
    X(ReferenceValueName, "Reference Value Name")                                   \
    X(ReferenceValueDescription, "Reference Value Description")                     \
    X(ReferenceValueValue, "Reference Value Value")                                 \
    X(ReferenceValueValueDescription, "Reference Value Value Description")          \
    X(ReferenceValueMinValue, "Reference Value Min Value")                          \
    X(ReferenceValueMaxValue, "Reference Value Max Value")                          \
    X(AttachmentTypeName, "Attachment Type Name")                                   \
    X(AttachmentTypeDescription, "Attachment Type Description")                     \
    X(AttachmentName, "Attachment Name")                                            \
    X(AttachmentDescription, "Attachment Description")                              \
    X(AttachmentValueDefault, "Attachment Value Default")                           \
    X(BoundDictionaryObjectValueOverride, "Bound Dictionary Object Value Override") \
    X(DomainNote, "Domain Note")                                                    \
    X(DomainAttributeName, "Domain Attribute Name")                                 \
    X(DictionaryObjectLinkNodeName, "Dictionary Object Link Node Name")             \
    X(DefaultConstraintName, "Default Constraint Name")

namespace tessmeta {

// Indexes into the built-in list: kUsage<Stem>.
enum EStringUsage : int {
#define TESSMETA_USAGE_ENUM(stem, name) kUsage##stem,
    TESSMETA_STRING_USAGE_TYPES(TESSMETA_USAGE_ENUM)
#undef TESSMETA_USAGE_ENUM
        kStringUsageTypeCount
};
static_assert(kStringUsageTypeCount == 121);

// The built-in names, in list order.
inline constexpr const char* kStringUsageTypeNames[kStringUsageTypeCount] = {
#define TESSMETA_USAGE_NAME(stem, name) name,
    TESSMETA_STRING_USAGE_TYPES(TESSMETA_USAGE_NAME)
#undef TESSMETA_USAGE_NAME
};

// The accessor stems, in list order.
inline constexpr const char* kStringUsageTypeStems[kStringUsageTypeCount] = {
#define TESSMETA_USAGE_STEM(stem, name) #stem,
    TESSMETA_STRING_USAGE_TYPES(TESSMETA_USAGE_STEM)
#undef TESSMETA_USAGE_STEM
};

}  // namespace tessmeta
