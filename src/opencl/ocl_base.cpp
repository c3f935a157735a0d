#include "opencl/ocl_base.h"

namespace pictavo {

COCLBase::COCLBase() noexcept : memoryClient_(CCommonUtility::Create("VKTMask_COCLBase", this)) {}

COCLBase::~COCLBase() { delete memoryClient_; }

}  // namespace pictavo
