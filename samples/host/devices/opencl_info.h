#ifndef PICTAVO_SAMPLES_HOST_DEVICES_OPENCL_INFO_H_
#define PICTAVO_SAMPLES_HOST_DEVICES_OPENCL_INFO_H_

#include <string>

#include "pictavo/pictavo_host.h"

namespace host {

/// Whether the library's OpenCL methods work here: fills a pixel.
bool OpenCLWorks(pictavo::IPictavo6* object);

/// The device that pictavo.h says the library takes, for people; empty without one.
std::string OpenCLDeviceName();

/// Prints platforms, devices, what the library makes of them, and its cache. The object must not
/// have used OpenCL yet.
void PrintOpenCL(pictavo::Library& library);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_DEVICES_OPENCL_INFO_H_
