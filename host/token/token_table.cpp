// The tokens of a module.
#include "host/token/token_table.h"

#include <algorithm>
#include <utility>

#include "host/output/failure.h"
#include "host/system/interruption.h"
#include "host/token/cryptoki.h"

namespace zr::host {
namespace {

/// More slots than any reader has: a faulty module may report billions.
constexpr INT kMostSlots = 1 << 16;

std::string readText(IKeyObject& token, HRESULT (STDMETHODCALLTYPE IKeyObject::*getter)(BSTR*)) {
    zrkey::Text text;
    return SUCCEEDED((token.*getter)(text.receive())) ? text.utf8() : std::string();
}

}  // namespace

TokenTable readTokens(ITokenProvider& provider) {
    TokenTable table;
    const HRESULT result = provider.GetKeyCount(&table.slots);
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "count the tokens", result,
                             "check that the reader is connected");
    }
    for (LONG i = 0; i < std::min(table.slots, kMostSlots); ++i) {
        stopIfInterrupted();
        TokenRow row;
        row.index = i;
        if (FAILED(provider.OpenKey(i, row.token.receive())) || !row.token) {
            continue;
        }
        IKeyObject& token = *row.token.get();
        row.label = readText(token, &IKeyObject::GetLabel);
        row.serial = readText(token, &IKeyObject::GetSerialNumber);
        row.manufacturer = readText(token, &IKeyObject::GetManufacturerID);
        row.model = readText(token, &IKeyObject::GetModelID);
        if (!isBlankToken(row.label, row.serial)) {
            table.rows.push_back(std::move(row));
        }
    }
    stopIfInterrupted();
    return table;
}

}  // namespace zr::host
