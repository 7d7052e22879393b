// CViewEditState: the edit state of a view object, two 16-bit halves of one word.
//
//   bits  0-15  user edit state: the edit the user made and the model has not yet
//               taken in; bits 0-14 are its code, bit 15 a flag carried along;
//   bits 16-31  plex edit state: the state the view has settled in; bits 16-30 are
//               its code, bit 31 the flag.
//
// GetAndUpdateEditState folds a pending user edit into the plex state and clears
// the user code (the user flag stays). By user code c and plex code p (flags
// ignored when codes are compared), the plex half becomes:
//
//   c = 1   p = 2: unchanged          otherwise: the user half
//   c = 2   p = 3: 0                  otherwise: the user half
//   c = 3   p = 2: user flag | 4      p = 4: unchanged      otherwise: the user half
//   other c        unchanged
//
// Taking the user half moves the user flag (bit 15) into the plex flag (bit 31).
//
// Every view-table row carries one (CKelViewTable derives from this class); the
// word is stored with the row.
#pragma once

#include "platform/types.h"

class CViewEditState {
  public:
    CViewEditState() = default;
    virtual ~CViewEditState() = default;
    CViewEditState(const CViewEditState&) = default;
    CViewEditState& operator=(const CViewEditState&) = default;

    // The whole word.
    ULONG GetEditState() const { return m_state; }
    void SetEditState(ULONG state) { m_state = state; }

    // The low half, flag included. The setter keeps the high half and takes the low
    // 16 bits of `state`.
    ULONG GetUserEditState() const { return m_state & kHalfMask; }
    void SetUserEditState(ULONG state) { m_state = (m_state & ~kHalfMask) | (state & kHalfMask); }

    // The high half, flag included. The setter keeps the low half; bits of `state`
    // above 15 are lost.
    ULONG GetPlexEditState() const { return m_state >> 16; }
    void SetPlexEditState(ULONG state) { m_state = (m_state & kHalfMask) | (state << 16); }

    // Folds the user edit into the plex state (see the top of this file) and clears
    // the user code. Returns the user half as it was before the call.
    ULONG GetAndUpdateEditState();

  private:
    static constexpr ULONG kHalfMask = 0xFFFF;

    ULONG m_state = 0;
};
