#ifndef PICTAVO_OPENCL_OCL_BASE_H_
#define PICTAVO_OPENCL_OCL_BASE_H_

#include "frame/common_utility.h"

namespace pictavo {

/// The OpenCL part of the library object. Attaches its memory-manager client at construction.
class COCLBase {
 public:
  COCLBase() noexcept;
  virtual ~COCLBase();
  COCLBase(const COCLBase&) = delete;
  COCLBase& operator=(const COCLBase&) = delete;

 private:
  CCommonUtility* memoryClient_;
};

}  // namespace pictavo

#endif  // PICTAVO_OPENCL_OCL_BASE_H_
