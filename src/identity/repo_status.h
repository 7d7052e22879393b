// The repository status word of a unique object and the one rule that changes it.
//
// Three state bits say how the object stands towards the shared model repository
// (at most one of them set), two side-state bits likewise, and three more bits
// react to changes of those. Bits outside these are carried unchanged.
#pragma once

#include "platform/types.h"

namespace tessmeta {

inline constexpr DWORD kRepoNew = 0x1;       // never stored in the repository
inline constexpr DWORD kRepoStored = 0x2;    // held there, first state
inline constexpr DWORD kRepoStored2 = 0x4;   // held there, second state
inline constexpr DWORD kRepoSide1 = 0x8;     // side state (set only by the rule)
inline constexpr DWORD kRepoSide2 = 0x10;    // side state
inline constexpr DWORD kRepoSticky = 0x100;  // survives a change to kRepoStored
inline constexpr DWORD kRepoClearedBySide = 0x200;
inline constexpr DWORD kRepoClearedByState = 0x400;

inline constexpr DWORD kRepoStateBits = kRepoNew | kRepoStored | kRepoStored2;
inline constexpr DWORD kRepoSideBits = kRepoSide1 | kRepoSide2;

// Applies `value` to `status`. The low five bits of `value` pick the case and the
// whole of `value` is then ORed in:
//   1 or 4   clear the state bits, 0x100 and 0x400;
//   2        the same but 0x100 is kept, and a New object is left alone unless
//            `force` is set (it cannot enter the repository without it);
//   8 or 16  clear the side bits and 0x200;
//   anything else (0, 3, 5-7, 9-15, 17-31) changes nothing.
constexpr DWORD ApplyRepoStatusRule(DWORD status, DWORD value, bool force) {
    switch (value & 0x1F) {
        case 1:
        case 4:
            return (status & ~(kRepoStateBits | kRepoSticky | kRepoClearedByState)) | value;
        case 2: {
            if (!force && (status & kRepoNew)) return status;
            const DWORD sticky = status & kRepoSticky;
            return (status & ~(kRepoStateBits | kRepoSticky | kRepoClearedByState)) | value |
                   sticky;
        }
        case 8:
        case 16:
            return (status & ~(kRepoSideBits | kRepoClearedBySide)) | value;
        default:
            return status;
    }
}

}  // namespace tessmeta
