// The Automation objects of the classes of the model, each with one reference.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include "host/objects/object.h"

namespace zr::automation {

// All throw std::bad_alloc. The object is of the class.

IDispatch* makeTokenProvider(host::ObjectRef object);
IDispatch* makeToken(host::ObjectRef object);
IDispatch* makeFile(host::ObjectRef object);
IDispatch* makeContainer(host::ObjectRef object);
IDispatch* makeCertificate(host::ObjectRef object);
IDispatch* makeCollection(host::ObjectRef object);

}  // namespace zr::automation
