#include "identity/global_id_maps.h"

CGlobalIdMaps::~CGlobalIdMaps() {
    CleanGlobalIdMaps();
}

void CGlobalIdMaps::CleanGlobalIdMaps() {
#define TESS_MAP_CLEAN(Stem) m_map##Stem.RemoveAll();
    TESS_GLOBAL_ID_MAPS(TESS_MAP_CLEAN)
#undef TESS_MAP_CLEAN
}
