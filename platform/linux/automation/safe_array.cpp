// SAFEARRAY: creation, locking, deep copies and destruction.
//
// As on Windows, 16 hidden bytes before the structure hold what has no field in it: the element
// type in the last four bytes, or the interface identifier of interface elements.
#include <zrkey/automation.h>

#include <cstddef>
#include <limits>

#include "platform/linux/automation/allocator.h"

namespace {

constexpr std::size_t kHiddenSize = 16;
constexpr ULONG kMaxLocks = 0xffff;
// How deep arrays of variants may contain each other. An array that contains itself is deeper.
constexpr int kMostLevels = 256;
// The array does not own its memory.
constexpr USHORT kForeign = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED;

struct ElementType {
    ULONG size;
    USHORT features;
};

// Size and features of an element type; size 0 when elements cannot have the type.
ElementType elementType(VARTYPE type) {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            return {1, FADF_HAVEVARTYPE};
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return {2, FADF_HAVEVARTYPE};
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            return {4, FADF_HAVEVARTYPE};
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
            return {8, FADF_HAVEVARTYPE};
        case VT_DECIMAL:
            return {16, FADF_HAVEVARTYPE};
        case VT_BSTR:
            return {sizeof(BSTR), FADF_HAVEVARTYPE | FADF_BSTR};
        case VT_VARIANT:
            return {sizeof(VARIANT), FADF_HAVEVARTYPE | FADF_VARIANT};
        case VT_UNKNOWN:
            return {sizeof(void*), FADF_HAVEIID | FADF_UNKNOWN};
        case VT_DISPATCH:
            return {sizeof(void*), FADF_HAVEIID | FADF_DISPATCH};
        default:
            return {0, 0};
    }
}

char* hiddenPart(SAFEARRAY* array) {
    return reinterpret_cast<char*>(array) - kHiddenSize;
}

void setHiddenType(SAFEARRAY* array, VARTYPE type) {
    if ((array->fFeatures & FADF_HAVEIID) != 0) {
        const IID& iid = type == VT_DISPATCH ? IID_IDispatch : IID_IUnknown;
        std::memcpy(hiddenPart(array), &iid, sizeof iid);
    } else {
        const DWORD value = type;
        std::memcpy(hiddenPart(array) + kHiddenSize - sizeof value, &value, sizeof value);
    }
}

SAFEARRAY* allocateDescriptor(UINT dimensions) {
    const std::size_t size = offsetof(SAFEARRAY, rgsabound) + dimensions * sizeof(SAFEARRAYBOUND);
    auto* block = static_cast<char*>(zr::allocate(kHiddenSize + size));
    if (!block) {
        return nullptr;
    }
    auto* array = reinterpret_cast<SAFEARRAY*>(block + kHiddenSize);
    array->cDims = static_cast<USHORT>(dimensions);
    return array;
}

void releaseDescriptor(SAFEARRAY* array) {
    zr::release(hiddenPart(array));
}

// Whether the stored element type, if there is one, has the size of the elements.
bool hasTypeOfItsSize(SAFEARRAY* array) {
    if ((array->fFeatures & FADF_HAVEVARTYPE) == 0) {
        return true;
    }
    DWORD type = 0;
    std::memcpy(&type, hiddenPart(array) + kHiddenSize - sizeof type, sizeof type);
    return elementType(static_cast<VARTYPE>(type)).size == array->cbElements;
}

SAFEARRAYBOUND* boundsOf(SAFEARRAY* array) {
    return reinterpret_cast<SAFEARRAYBOUND*>(reinterpret_cast<char*>(array) +
                                             offsetof(SAFEARRAY, rgsabound));
}

std::size_t elementCount(SAFEARRAY* array) {
    std::size_t count = array->cDims > 0 ? 1 : 0;
    for (UINT i = 0; i < array->cDims; ++i) {
        count *= boundsOf(array)[i].cElements;
    }
    return count;
}

// Returns false when the array needs more than 32 bits of bytes.
bool dataSize(SAFEARRAY* array, std::size_t* size) {
    ULONGLONG total = array->cbElements;
    bool fits = true;
    for (UINT i = 0; i < array->cDims; ++i) {
        const ULONG elements = boundsOf(array)[i].cElements;
        if (elements == 0) {
            *size = 0;
            return true;
        }
        fits = fits && total <= std::numeric_limits<ULONG>::max() / elements;
        total = fits ? total * elements : total;
    }
    *size = static_cast<std::size_t>(total);
    return fits;
}

// The size that elements of a kind have; 0 when the features leave it open.
ULONG sizeByFeatures(USHORT features) {
    if ((features & (FADF_BSTR | FADF_UNKNOWN | FADF_DISPATCH)) != 0) {
        return sizeof(void*);
    }
    return (features & FADF_VARIANT) != 0 ? sizeof(VARIANT) : 0;
}

bool hasSizeByFeatures(SAFEARRAY* array) {
    const ULONG size = sizeByFeatures(array->fFeatures);
    return size == 0 || array->cbElements == size;
}

// Whether the elements can be where the structure says: a caller may have built or changed it.
bool isConsistent(SAFEARRAY* array) {
    return array->cDims > 0 && array->cbElements > 0 && hasSizeByFeatures(array) &&
           (array->pvData || elementCount(array) == 0);
}

// Counts the levels of arrays within arrays that the thread works on.
class Level {
public:
    Level() { ++s_levels; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() { --s_levels; }

    bool isTooDeep() const { return s_levels > kMostLevels; }

private:
    static thread_local int s_levels;
};

thread_local int Level::s_levels = 0;

bool allocateData(SAFEARRAY* array) {
    std::size_t size = 0;
    if (!dataSize(array, &size)) {
        return false;
    }
    // An array without elements has an address, too.
    array->pvData = zr::allocate(size == 0 ? 1 : size);
    return array->pvData;
}

void clearElements(SAFEARRAY* array) {
    const std::size_t count = elementCount(array);
    for (std::size_t i = 0; i < count; ++i) {
        if ((array->fFeatures & FADF_BSTR) != 0) {
            SysFreeString(static_cast<BSTR*>(array->pvData)[i]);
        } else if ((array->fFeatures & FADF_VARIANT) != 0) {
            VariantClear(static_cast<VARIANT*>(array->pvData) + i);
        } else if ((array->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) != 0) {
            if (IUnknown* element = static_cast<IUnknown**>(array->pvData)[i]) {
                element->Release();
            }
        } else {
            return;
        }
    }
}

HRESULT copyElements(SAFEARRAY* from, SAFEARRAY* to) {
    const std::size_t count = elementCount(from);
    if ((from->fFeatures & FADF_BSTR) != 0) {
        for (std::size_t i = 0; i < count; ++i) {
            BSTR source = static_cast<BSTR*>(from->pvData)[i];
            if (!source) {
                continue;
            }
            BSTR copy = SysAllocStringByteLen(reinterpret_cast<const char*>(source),
                                              SysStringByteLen(source));
            if (!copy) {
                return E_OUTOFMEMORY;
            }
            static_cast<BSTR*>(to->pvData)[i] = copy;
        }
    } else if ((from->fFeatures & FADF_VARIANT) != 0) {
        for (std::size_t i = 0; i < count; ++i) {
            const HRESULT hr = VariantCopy(static_cast<VARIANT*>(to->pvData) + i,
                                           static_cast<VARIANT*>(from->pvData) + i);
            if (FAILED(hr)) {
                return hr;
            }
        }
    } else if ((from->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) != 0) {
        for (std::size_t i = 0; i < count; ++i) {
            IUnknown* element = static_cast<IUnknown**>(from->pvData)[i];
            static_cast<IUnknown**>(to->pvData)[i] = element;
            if (element) {
                element->AddRef();
            }
        }
    } else if (count > 0) {
        std::memcpy(to->pvData, from->pvData, count * from->cbElements);
    }
    return S_OK;
}

void destroy(SAFEARRAY* array) {
    if (array->pvData) {
        // Locked, so that an array that contains itself is not destroyed within.
        ++array->cLocks;
        clearElements(array);
        --array->cLocks;
    }
    if ((array->fFeatures & kForeign) == 0) {
        zr::release(array->pvData);
        releaseDescriptor(array);
    }
}

}  // namespace

extern "C" {

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
    const ElementType element = elementType(type);
    if (element.size == 0 || dimensions == 0 || dimensions > 0xffff || !bounds) {
        return nullptr;
    }
    SAFEARRAY* array = allocateDescriptor(dimensions);
    if (!array) {
        return nullptr;
    }
    array->fFeatures = element.features;
    array->cbElements = element.size;
    setHiddenType(array, type);
    // The structure holds the bounds in reverse order.
    for (UINT i = 0; i < dimensions; ++i) {
        boundsOf(array)[i] = bounds[dimensions - 1 - i];
    }
    if (!allocateData(array)) {
        releaseDescriptor(array);
        return nullptr;
    }
    return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    if (!array) {
        return S_OK;
    }
    if (array->cLocks > 0) {
        return DISP_E_ARRAYISLOCKED;
    }
    const Level level;
    if (level.isTooDeep() || !hasSizeByFeatures(array)) {
        return E_INVALIDARG;
    }
    destroy(array);
    return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY* array) {
    if (!array) {
        return E_INVALIDARG;
    }
    if (array->cLocks >= kMaxLocks) {
        return E_UNEXPECTED;
    }
    ++array->cLocks;
    return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* array) {
    if (!array) {
        return E_INVALIDARG;
    }
    if (array->cLocks == 0) {
        return E_UNEXPECTED;
    }
    --array->cLocks;
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (!array || !data) {
        return E_INVALIDARG;
    }
    *data = nullptr;
    if (!isConsistent(array)) {
        return E_INVALIDARG;
    }
    const HRESULT hr = SafeArrayLock(array);
    if (SUCCEEDED(hr)) {
        *data = array->pvData;
    }
    return hr;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
    return SafeArrayUnlock(array);
}

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
    if (!copy) {
        return E_INVALIDARG;
    }
    *copy = nullptr;
    if (!array) {
        return S_OK;
    }
    const Level level;
    if (level.isTooDeep() || !isConsistent(array) || !hasTypeOfItsSize(array)) {
        return E_INVALIDARG;
    }
    SAFEARRAY* result = allocateDescriptor(array->cDims);
    if (!result) {
        return E_OUTOFMEMORY;
    }
    result->fFeatures =
        static_cast<USHORT>(array->fFeatures & ~(kForeign | FADF_FIXEDSIZE | FADF_CREATEVECTOR));
    result->cbElements = array->cbElements;
    // An array structure that a caller built itself has no hidden part.
    if ((array->fFeatures & (FADF_HAVEVARTYPE | FADF_HAVEIID)) != 0) {
        std::memcpy(hiddenPart(result), hiddenPart(array), kHiddenSize);
    }
    std::memcpy(boundsOf(result), boundsOf(array), array->cDims * sizeof(SAFEARRAYBOUND));
    if (!allocateData(result)) {
        releaseDescriptor(result);
        return E_OUTOFMEMORY;
    }
    const HRESULT hr = copyElements(array, result);
    if (FAILED(hr)) {
        destroy(result);
        return hr;
    }
    *copy = result;
    return S_OK;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
    if (!array || !type) {
        return E_INVALIDARG;
    }
    if ((array->fFeatures & FADF_HAVEVARTYPE) != 0) {
        DWORD value = 0;
        std::memcpy(&value, hiddenPart(array) + kHiddenSize - sizeof value, sizeof value);
        *type = static_cast<VARTYPE>(value);
    } else if ((array->fFeatures & FADF_HAVEIID) != 0) {
        *type = (array->fFeatures & FADF_DISPATCH) != 0 ? VT_DISPATCH : VT_UNKNOWN;
    } else {
        return E_INVALIDARG;
    }
    return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) {
    return array ? array->cDims : 0;
}

UINT SafeArrayGetElemsize(SAFEARRAY* array) {
    return array ? array->cbElements : 0;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (!array || !bound) {
        return E_INVALIDARG;
    }
    if (dimension == 0 || dimension > array->cDims) {
        return DISP_E_BADINDEX;
    }
    *bound = boundsOf(array)[array->cDims - dimension].lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (!array || !bound) {
        return E_INVALIDARG;
    }
    if (dimension == 0 || dimension > array->cDims) {
        return DISP_E_BADINDEX;
    }
    const SAFEARRAYBOUND& entry = boundsOf(array)[array->cDims - dimension];
    *bound = static_cast<LONG>(static_cast<ULONG>(entry.lLbound) + entry.cElements - 1);
    return S_OK;
}

}  // extern "C"
