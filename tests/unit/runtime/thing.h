// A small scriptable class for testing the dispatch base.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "runtime/component.h"
#include "runtime/dispatch_table.h"

struct IThing : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Own(INT value) = 0;
};

/// Counts how many were released and destroyed, and keeps the arguments of its adapter.
class Thing : public ZComponent<IThing> {
public:
    ~Thing() override { ++s_destroyed; }

    HRESULT STDMETHODCALLTYPE Own(INT value) override { return value; }
    void FinalRelease() override { ++s_finalReleases; }
    DispatchInfo* GetSelfDispatchInfo() override { return s_rows; }
    int GetSelfGetDispatchInfoCount() override { return 4; }

    HRESULT _Keep(DISPPARAMS* params, VARIANT* result) {
        ++calls;
        kept.assign(params->rgvarg, params->rgvarg + params->cArgs);
        text.clear();
        if (params->cArgs > 0 && params->rgvarg[0].vt == VT_BSTR && params->rgvarg[0].bstrVal) {
            const BSTR given = params->rgvarg[0].bstrVal;
            text.assign(given, SysStringLen(given));
        }
        if (result) {
            result->vt = VT_I4;
            result->lVal = 42;
        }
        return 7;
    }

    std::vector<VARIANT> kept;
    std::basic_string<OLECHAR> text;
    int calls = 0;

    static inline int s_destroyed = 0;
    static inline int s_finalReleases = 0;
    static inline DispatchInfo s_rows[] = {
        {1, "Keep", enDispatchMethod, nullptr, VT_I4, {3, 16, 5, 14}},
        {2, "Listed", enDispatchMethod, nullptr, VT_VOID, {}},
        {3, "Value", enDispatchProperty, nullptr, VT_I4, {}},
        {4, "Same", enDispatchMethod, nullptr, VT_I4, {}},
        {},
    };
    static inline const bool s_areStored =
        zr::storeAdapters<Thing>(s_rows, {&Thing::_Keep, nullptr, &Thing::_Keep, &Thing::_Keep});
};

/// A fixture with a Thing that has one reference.
class ThingTest : public testing::Test {
protected:
    ThingTest() { thing->AddRef(); }
    ~ThingTest() override { thing->Release(); }

    /// Looks up a name, passed count times.
    HRESULT find(const OLECHAR* name, DISPID* id, UINT count = 1) {
        std::vector<LPOLESTR> names(count, const_cast<LPOLESTR>(name));
        return thing->GetIDsOfNames(IID_NULL, names.data(), count, 0, id);
    }

    HRESULT invoke(DISPID id, std::vector<VARIANT> arguments, VARIANT* result = nullptr) {
        DISPPARAMS params = {};
        params.rgvarg = arguments.data();
        params.cArgs = static_cast<UINT>(arguments.size());
        return thing->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, result, nullptr, nullptr);
    }

    static VARIANT number(double value) {
        VARIANT variant = {};
        variant.vt = VT_R8;
        variant.dblVal = value;
        return variant;
    }

    Thing* thing = new Thing();
};
