#include "views/view_edit_state.h"

namespace {

constexpr ULONG kFlag = 0x8000;      // the flag bit of a half
constexpr ULONG kCodeMask = 0x7FFF;  // the code bits of a half

}  // namespace

ULONG CViewEditState::GetAndUpdateEditState() {
    const ULONG user = GetUserEditState();
    const ULONG plexCode = GetPlexEditState() & kCodeMask;
    switch (user & kCodeMask) {
        case 1:
            if (plexCode != 2) SetPlexEditState(user);
            break;
        case 2:
            SetPlexEditState(plexCode == 3 ? 0 : user);
            break;
        case 3:
            if (plexCode == 2)
                SetPlexEditState((user & kFlag) | 4);
            else if (plexCode != 4)
                SetPlexEditState(user);
            break;
        default:
            break;
    }
    m_state &= ~kCodeMask;
    return user;
}
