// Variants of any type for the arguments of a call.
#include "tests/fuzz/any_variant.h"

#include <iterator>

namespace zr::fuzz {
namespace {

constexpr int kDeepest = 3;

constexpr VARTYPE kPlain[] = {VT_EMPTY, VT_NULL, VT_I2,    VT_I4,   VT_R4,  VT_R8,
                              VT_CY,    VT_DATE, VT_ERROR, VT_BOOL, VT_I1,  VT_UI1,
                              VT_UI2,   VT_UI4,  VT_I8,    VT_UI8,  VT_INT, VT_UINT};

constexpr VARTYPE kElements[] = {VT_UI1, VT_UI1, VT_UI1, VT_I1,   VT_BSTR, VT_VARIANT, VT_DISPATCH,
                                 VT_I2,  VT_I4,  VT_R8,  VT_BOOL, VT_CY,   VT_UNKNOWN, VT_UI8};

}  // namespace

BSTR makeAnyString(Input& input) {
    const std::uint8_t kind = input.byte();
    if (kind == 255) {
        return nullptr;
    }
    const std::string bytes = input.text();
    if (kind == 254) {
        return SysAllocStringByteLen(bytes.data(), static_cast<UINT>(bytes.size()));
    }
    if (kind >= 128) {
        const BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(bytes.size() / 2));
        bytes.copy(reinterpret_cast<char*>(text), bytes.size() / 2 * 2);
        return text;
    }
    const std::basic_string<OLECHAR> letters(bytes.begin(), bytes.end());
    return SysAllocStringLen(letters.data(), static_cast<UINT>(letters.size()));
}

AnyVariants::AnyVariants(Input& input, const std::vector<IDispatch*>& objects)
    : m_input(input), m_objects(objects) {}

AnyVariants::~AnyVariants() {
    for (SAFEARRAY* array : m_locked) {
        SafeArrayUnlock(array);
    }
    for (VARIANT& variant : m_variants) {
        VariantClear(&variant);
    }
}

const VARIANT& AnyVariants::make(int depth) {
    VARIANT* variant = &m_variants.emplace_back();
    switch (m_input.below(10)) {
        case 0:
        case 1:
            setString(variant);
            break;
        case 2:
            setObject(variant);
            break;
        case 3:
        case 4:
            setArray(variant, depth);
            break;
        case 5:
            setReference(variant, depth);
            break;
        case 6:
            if (m_input.byte() >= 128) {
                variant->vt = m_input.number<VARTYPE>();
                break;
            }
            [[fallthrough]];
        default:
            variant->vt = kPlain[m_input.below(std::size(kPlain))];
            variant->llVal = m_input.flag() ? m_input.number<LONGLONG>() : m_input.byte();
    }
    return *variant;
}

void AnyVariants::setString(VARIANT* variant) {
    variant->vt = VT_BSTR;
    variant->bstrVal = makeAnyString(m_input);
}

void AnyVariants::setObject(VARIANT* variant) {
    variant->vt = m_input.flag() ? VT_DISPATCH : VT_UNKNOWN;
    if (!m_objects.empty() && m_input.byte() < 200) {
        variant->pdispVal = m_objects[m_input.below(m_objects.size())];
        variant->pdispVal->AddRef();
    }
}

void AnyVariants::setArray(VARIANT* variant, int depth) {
    const VARTYPE element = kElements[m_input.below(std::size(kElements))];
    const std::uint8_t kind = m_input.byte();
    variant->vt = static_cast<VARTYPE>(VT_ARRAY | element);
    if (kind == 255) {
        return;
    }
    SAFEARRAYBOUND bounds[3] = {
        {m_input.byte() % 32u, static_cast<LONG>(m_input.byte()) - 4}, {}, {}};
    const UINT dimensions = kind >= 220 ? kind % 3 + 1 : 1;
    for (UINT i = 1; i < dimensions; ++i) {
        bounds[i] = {m_input.byte() % 4u, m_input.number<LONG>()};
    }
    variant->parray = SafeArrayCreate(element, dimensions, bounds);
    if (!variant->parray) {
        return;
    }
    if (dimensions == 1 && depth < kDeepest) {
        fillArray(variant->parray, element, depth);
    }
    if (kind >= 200 && kind < 210) {
        SafeArrayLock(variant->parray);
        m_locked.push_back(variant->parray);
    } else if (kind >= 210 && kind < 220) {
        // Like the bytes that the library returns: the variant has another type than the array.
        variant->vt = VT_ARRAY | VT_UI1;
    }
}

void AnyVariants::fillArray(SAFEARRAY* array, VARTYPE element, int depth) {
    const ULONG count = array->rgsabound[0].cElements;
    if (element == VT_BSTR) {
        for (ULONG i = 0; i < count && i < 3; ++i) {
            static_cast<BSTR*>(array->pvData)[i] = makeAnyString(m_input);
        }
    } else if (element == VT_VARIANT) {
        for (ULONG i = 0; i < count && i < 3; ++i) {
            VariantCopy(static_cast<VARIANT*>(array->pvData) + i, &make(depth + 1));
        }
    } else if (element != VT_DISPATCH && element != VT_UNKNOWN) {
        m_input.text(std::size_t{count} * array->cbElements)
            .copy(static_cast<char*>(array->pvData), std::size_t{count} * array->cbElements);
    }
}

void AnyVariants::setReference(VARIANT* variant, int depth) {
    if (depth >= kDeepest) {
        return;
    }
    // A deque does not move its elements.
    auto* target = const_cast<VARIANT*>(&make(depth + 1));
    const bool isValue = m_input.flag() && (target->vt & VT_BYREF) == 0;
    variant->vt = static_cast<VARTYPE>(VT_BYREF | (isValue ? target->vt : VARTYPE{VT_VARIANT}));
    variant->byref = isValue ? static_cast<void*>(&target->llVal) : target;
}

}  // namespace zr::fuzz
