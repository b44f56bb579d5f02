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
    // Nobody can free arrays that contradict themselves.
    for (const Changed& changed : m_changed) {
        changed.array->cDims = changed.before.cDims;
        changed.array->fFeatures = changed.before.fFeatures;
        changed.array->cbElements = changed.before.cbElements;
        changed.array->pvData = changed.before.pvData;
    }
    for (VARIANT* variant : m_nested) {
        VariantInit(variant);
    }
    for (SAFEARRAY* array : m_nest) {
        SafeArrayDestroy(array);
    }
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
    // Not within other arrays: in a copy, a nest would be deeper than what can be freed.
    const bool isNest = kind >= 190 && kind < 200 && depth == 0 && dimensions == 1 &&
                        element == VT_VARIANT && bounds[0].cElements > 0;
    if (isNest) {
        nest(variant->parray);
    } else if (dimensions == 1 && depth < kDeepest) {
        fillArray(variant->parray, element, depth);
    }
    if (kind >= 180 && kind < 190) {
        contradict(variant->parray, element);
    } else if (kind >= 200 && kind < 210) {
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
            auto* made = const_cast<VARIANT*>(&make(depth + 1));
            VARIANT* const target = static_cast<VARIANT*>(array->pvData) + i;
            if (FAILED(VariantCopy(target, made)) &&
                (made->vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY) {
                // An array that contradicts itself is put there itself.
                *target = *made;
                VariantInit(made);
            }
        }
    } else if (element != VT_DISPATCH && element != VT_UNKNOWN) {
        m_input.text(std::size_t{count} * array->cbElements)
            .copy(static_cast<char*>(array->pvData), std::size_t{count} * array->cbElements);
    }
}

/// Only what no code may believe: elements that are as large as they say are really there.
void AnyVariants::contradict(SAFEARRAY* array, VARTYPE element) {
    m_changed.push_back({array, *array});
    static constexpr USHORT kinds[] = {FADF_BSTR, FADF_VARIANT, FADF_UNKNOWN, FADF_DISPATCH};
    const bool isPointer = element == VT_BSTR || element == VT_UNKNOWN || element == VT_DISPATCH;
    switch (m_input.below(4)) {
        case 0:
            array->cbElements = 0;
            break;
        case 1:
            array->cDims = 0;
            break;
        case 2:
            // Without elements, nothing to read is no contradiction.
            if (array->cDims == 1 && array->rgsabound[0].cElements > 0) {
                array->pvData = nullptr;
            }
            break;
        default:
            if (isPointer || element == VT_VARIANT) {
                static constexpr ULONG sizes[] = {1, 4, 16, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
                array->cbElements = sizes[m_input.below(std::size(sizes))];
            } else if (array->cbElements != sizeof(void*)) {
                array->fFeatures =
                    static_cast<USHORT>(array->fFeatures | kinds[m_input.below(std::size(kinds))]);
            }
    }
}

/// Puts the array into itself, or a nest of arrays into it that may be deeper than any walk goes.
void AnyVariants::nest(SAFEARRAY* array) {
    auto* place = static_cast<VARIANT*>(array->pvData);
    const std::size_t levels = m_input.flag() ? 250 + m_input.below(12) : 0;
    for (std::size_t i = 0; i < levels; ++i) {
        SAFEARRAYBOUND bound = {1, 0};
        SAFEARRAY* const inner = SafeArrayCreate(VT_VARIANT, 1, &bound);
        m_nest.push_back(inner);
        m_nested.push_back(place);
        place->vt = VT_ARRAY | VT_VARIANT;
        place->parray = inner;
        place = static_cast<VARIANT*>(inner->pvData);
    }
    if (levels == 0) {
        m_nested.push_back(place);
        place->vt = VT_ARRAY | VT_VARIANT;
        place->parray = array;
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
