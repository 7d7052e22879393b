// The tessmeta library: every public class, with the record store and the platform
// types it is written in.
#pragma once

#include "zmflib.h"

#include "foundation/balanced_tree.h"
#include "foundation/enh_services.h"
#include "foundation/enh_table.h"
#include "foundation/enh_table_base.h"
#include "identity/global_id_maps.h"
#include "identity/guid_mgr.h"
#include "identity/guid_text.h"
#include "identity/repo_status.h"
#include "metadata/meta_class_member_table.h"
#include "metadata/meta_table_table.h"
#include "metadata/object_prop_override_mgr.h"
#include "metadata/property_mgr.h"
#include "model/model_check.h"
#include "model/model_file.h"
#include "model/model_generator.h"
#include "namespace/name_space_mgr.h"
#include "platform/cobject.h"
#include "schema/schema_object_mgr.h"
