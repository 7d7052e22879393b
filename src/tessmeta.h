// The tessmeta library: every public class, with the record store and the platform
// types it is written in.
#pragma once

#include "zmflib.h"

#include "dictionary/dict_object_mgr.h"
#include "foundation/balanced_tree.h"
#include "foundation/enh_indexes.h"
#include "foundation/enh_services.h"
#include "foundation/enh_table.h"
#include "foundation/enh_table_base.h"
#include "identity/global_id_maps.h"
#include "identity/guid_mgr.h"
#include "identity/guid_text.h"
#include "identity/repo_status.h"
#include "layout/auto_layout_data_mgr.h"
#include "model/model_check.h"
#include "model/model_file.h"
#include "model/model_generator.h"
#include "namespace/name_space_mgr.h"
#include "platform/cobject.h"
#include "references/ref_object_mgr.h"
#include "views/view_edit_state.h"
#include "views/view_meta_data_mgr.h"
#include "repository/delay_checkout_table.h"
#include "repository/repo_messages.h"
#include "repository/repo_table_manager.h"
