#include "zmflib/db_object.h"

CDbObjectBase::~CDbObjectBase() = default;
