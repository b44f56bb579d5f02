// Members of the provider that convert bytes, for hosts whose language cannot: VBScript and JScript
// read no byte arrays.
#pragma once

#include "host/objects/provider_object.h"

namespace zr::host {

Value bytesToHex(ProviderObject& provider, const Arguments& arguments);
Value hexToBytes(ProviderObject& provider, const Arguments& arguments);
Value bytesToBase64(ProviderObject& provider, const Arguments& arguments);
Value base64ToBytes(ProviderObject& provider, const Arguments& arguments);
Value bytesToText(ProviderObject& provider, const Arguments& arguments);
Value textToBytes(ProviderObject& provider, const Arguments& arguments);

}  // namespace zr::host
