// An automation object for tests of scripts: members that return their arguments and odd results.
#include "tests/host/script/scripted_object.h"

#include <cstdio>
#include <string>

namespace zr::test {
namespace {

using OleString = std::basic_string<OLECHAR>;
using Member = HRESULT (*)(const DISPPARAMS& params, VARIANT& result);

int s_living = 0;

void setText(VARIANT& result, const std::string& text) {
    const OleString wide(text.begin(), text.end());
    result.vt = VT_BSTR;
    result.bstrVal = SysAllocString(wide.c_str());
}

HRESULT echo(const DISPPARAMS& params, VARIANT& result) {
    return params.cArgs > 0 ? VariantCopy(&result, &params.rgvarg[0]) : E_INVALIDARG;
}

HRESULT types(const DISPPARAMS& params, VARIANT& result) {
    std::string text;
    for (UINT i = 0; i < params.cArgs; ++i) {
        text.append(i > 0 ? " " : "").append(std::to_string(params.rgvarg[i].vt));
    }
    setText(result, text);
    return S_OK;
}

HRESULT units(const DISPPARAMS& params, VARIANT& result) {
    const BSTR source = params.rgvarg[0].bstrVal;
    std::string text;
    for (UINT i = 0; i < SysStringLen(source); ++i) {
        char unit[16];
        std::snprintf(unit, sizeof unit, "%s%x", i > 0 ? " " : "", unsigned{source[i]});
        text += unit;
    }
    setText(result, text);
    return S_OK;
}

/// Three texts, the middle one a null BSTR.
HRESULT texts(const DISPPARAMS&, VARIANT& result) {
    SAFEARRAYBOUND bound = {3, 0};
    result.parray = SafeArrayCreate(VT_BSTR, 1, &bound);
    result.vt = VT_ARRAY | VT_BSTR;
    void* data = nullptr;
    const HRESULT access = SafeArrayAccessData(result.parray, &data);
    if (FAILED(access)) {
        return access;
    }
    static_cast<BSTR*>(data)[0] = SysAllocString(OLESTR("one"));
    static_cast<BSTR*>(data)[2] = SysAllocString(OLESTR("three"));
    return SafeArrayUnaccessData(result.parray);
}

/// Its second argument, converted to the type given by the first.
HRESULT number(const DISPPARAMS& params, VARIANT& result) {
    return VariantChangeType(&result, &params.rgvarg[1], 0,
                             static_cast<VARTYPE>(params.rgvarg[0].dblVal));
}

HRESULT child(const DISPPARAMS&, VARIANT& result) {
    result.vt = VT_DISPATCH;
    result.pdispVal = new ScriptedObject;
    return S_OK;
}

HRESULT nullChild(const DISPPARAMS&, VARIANT& result) {
    result.vt = VT_DISPATCH;
    result.pdispVal = nullptr;
    return S_OK;
}

HRESULT odd(const DISPPARAMS&, VARIANT& result) {
    result.vt = VT_ERROR;
    result.scode = E_FAIL;
    return S_OK;
}

HRESULT fail(const DISPPARAMS&, VARIANT&) {
    return E_FAIL;
}

struct MemberRow {
    const OLECHAR* name;
    Member member;
};

constexpr MemberRow kMembers[] = {
    {OLESTR("Echo"), echo},           {OLESTR("Types"), types},   {OLESTR("Units"), units},
    {OLESTR("Texts"), texts},         {OLESTR("Number"), number}, {OLESTR("Child"), child},
    {OLESTR("NullChild"), nullChild}, {OLESTR("Odd"), odd},       {OLESTR("Fail"), fail},
};

}  // namespace

ScriptedObject::ScriptedObject() {
    ++s_living;
}

ScriptedObject::~ScriptedObject() {
    --s_living;
}

int ScriptedObject::living() {
    return s_living;
}

HRESULT ScriptedObject::QueryInterface(REFIID, void**) {
    return E_NOTIMPL;
}

ULONG ScriptedObject::AddRef() {
    return ++m_references;
}

ULONG ScriptedObject::Release() {
    const ULONG left = --m_references;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT ScriptedObject::GetTypeInfoCount(UINT*) {
    return E_NOTIMPL;
}

HRESULT ScriptedObject::GetTypeInfo(UINT, LCID, ITypeInfo**) {
    return E_NOTIMPL;
}

HRESULT ScriptedObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) {
    DISPID id = 0;
    for (const MemberRow& row : kMembers) {
        ++id;
        if (OleString(row.name) == names[0]) {
            *ids = id;
            return S_OK;
        }
    }
    return E_FAIL;
}

HRESULT ScriptedObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                               VARIANT* result, EXCEPINFO*, UINT*) {
    if (flags != DISPATCH_METHOD || id < 1 || id > DISPID{std::size(kMembers)}) {
        return E_INVALIDARG;
    }
    return kMembers[id - 1].member(*params, *result);
}

}  // namespace zr::test
