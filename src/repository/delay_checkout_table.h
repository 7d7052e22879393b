// CEnhDelayCheckoutTable ("Delayed_Checkout"): check-out requests that the host
// could not carry out at once and will carry out later.
//
// At most one request per model object, found by the object's id through a hash
// map (bucket = object id modulo the bucket count). Rows stay in the order they
// were added (load order, then inserts). The host builds the table on the model
// file, loads it with Init and hands it to CGuidMgr::SetEnhDelayedCheckOutTable;
// deleting an object there removes its request through DeleteFKRow.
//
// Map sizing: Init gives the map 1.25 buckets per stored row (truncated; an empty
// table gets one bucket). Like the other row maps it doubles (2n + 1) once it holds
// more than two requests per bucket, so a table that starts small stays fast.
//
// Loading: a stored row whose object already has a request takes over the map
// entry; both rows stay in the list and are saved back. Nothing reaches the record
// store before Save.
#pragma once

#include "foundation/enh_table_base.h"
#include "identity/repository_hooks.h"
#include "platform/cmap.h"
#include "platform/types.h"
#include "zmflib/identity_mgr.h"
#include "zmflib/rows.h"
#include "zmflib/zmf_file.h"

// One pending request: Delayed_Checkout_ID (key), Request_Value (the host's value,
// kept as given), Object_ID, and four columns (Reserved_1 to Reserved_4) that the
// library keeps as loaded and never sets. Copies copy every field, the list slot
// included.
class CKelDelayCheckout final : public CDelayed_CheckoutBase {};

class CEnhDelayCheckoutTable : public CEnhTableBase, public IDelayedCheckoutHooks {
  public:
    static constexpr UINT kInitialBuckets = 17;

    // `file` and `keys` are borrowed; `keys` null means the file's key allocator.
    CEnhDelayCheckoutTable(CZmfFile* file, CIdentityMgr* keys);
    ~CEnhDelayCheckoutTable() override;
    CEnhDelayCheckoutTable(const CEnhDelayCheckoutTable&) = delete;
    CEnhDelayCheckoutTable& operator=(const CEnhDelayCheckoutTable&) = delete;

    using CEnhTableBase::Init;
    // Loads every stored row (the argument is not used; see the sizing above).
    void Init(unsigned int unused) override;

    // The delayed check-out id of the object's request. A new request gets key
    // `key` (0: a new one) and stores `value`; when the object already has one,
    // that request's id is returned and nothing changes.
    ULONG Insert(ULONG objectId, ULONG value, ULONG key);

    // The object's request, or null.
    CKelDelayCheckout* GetFKRow(ULONG objectId) const;

    // Rows in the order they were added; GetNextRow returns the row and advances.
    using CEnhTableBase::GetFirstRowPosition;
    using CEnhTableBase::GetRowCount;
    CKelDelayCheckout* GetNextRow(POSITION& position) const {
        return static_cast<CKelDelayCheckout*>(CEnhTableBase::GetNextRow(position));
    }

    // Removes the object's request, if any.
    void DeleteFKRow(ULONG objectId) override;
    // Removes every request, in list order.
    void RemoveAllRows();

    // Rewrites the record-store table, in list order. The result of the last insert;
    // 1 when there are no rows, 0 when the table cannot be emptied.
    int Save(CZmfFile* file);

    // The bucket count of the map by object id.
    UINT GetHashTableSize() const { return m_byObject.GetHashTableSize(); }

  protected:
    // Adds a filled row: appends it, then declares its key (SetKeyValue) or, when it
    // has none, allocates one. Takes ownership. Returns the key.
    ULONG Insert(CKelDelayCheckout* row);

  private:
    struct SObjectTraits {
        static constexpr bool kGrow = true;
        static UINT Hash(ULONG objectId) { return objectId; }
        static bool Equal(const ULONG& stored, ULONG objectId) { return stored == objectId; }
    };
    using CObjectMap = CMap<ULONG, ULONG, CKelDelayCheckout*, CKelDelayCheckout*, SObjectTraits>;

    CIdentityMgr* m_pKeys;  // not owned
    CObjectMap m_byObject{10};
};
