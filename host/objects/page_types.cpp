// The types of the page library, in TypeScript.
#include "host/objects/page_types.h"

#include <algorithm>

#include "host/objects/member.h"
#include "host/token/signing.h"

namespace zr::host {
namespace {

/// A class of the page library. Lists are arrays there, and a page reaches no files.
struct PageClass {
    ObjectClass objectClass;
    const char* help;
    const char* own;  ///< members that are not in the table
};

constexpr const char* kProviderOwn = R"(
    /** Ends the connection: every token is logged out, and no object can be used afterwards. */
    close(): void;
    /** Resolves when the connection has ended: to null after close(), otherwise to the reason. */
    readonly closed: Promise<ZRKeyError | null>;
)";

// By host/browser/, which asks the user.
constexpr const char* kTokenOwn = R"(
    /** Asks the user for the PIN, in a window outside the page, and logs in. */
    login(options?: CallOptions): Promise<boolean>;

    /** Logs out; succeeds also when nobody is logged in. */
    logout(options?: CallOptions): Promise<boolean>;
)";

constexpr PageClass kClasses[] = {
    {ObjectClass::kProvider, "The tokens of the computer, and the connection to them.",
     kProviderOwn},
    {ObjectClass::kToken, "A token.", kTokenOwn},
    {ObjectClass::kContainer, "A certificate on a token, with its keys.", ""},
    {ObjectClass::kCertificate, "A certificate on a token.", ""}};

constexpr const char* kBegin =
    R"(// The types of zrkey.js. This file is written by "zrkey --generate page-types" from the table of
// members in host/objects/. Every call is refused with a ZRKeyError.

/** Bytes: a Uint8Array or another view, or a buffer. */
export type Bytes = ArrayBuffer | ArrayBufferView;

)";

constexpr const char* kCommon = R"(
/** The last argument of every call. */
export interface CallOptions {
    /** Cancels the call, and closes its prompt. */
    signal?: AbortSignal;
}

export interface AlgorithmOptions extends CallOptions {
    /** Left out: "rsa-sha256". */
    algorithm?: Algorithm;
}

/** docs/web-protocol.md says when each one comes. */
export type ErrorCode =
    | "unsupported" | "not-allowed" | "no-module" | "settings" | "too-many" | "too-large"
    | "unknown-member" | "arguments" | "closed" | "refused" | "wrong-pin" | "pin-locked"
    | "not-logged-in" | "token-removed" | "cancelled" | "wait" | "no-activation" | "busy"
    | "no-prompt" | "aborted" | "deadline" | "out-of-memory" | "internal"
    | "unavailable" | "protocol";

/** Why a call was refused. */
export class ZRKeyError extends Error {
    constructor(code: ErrorCode, message: string, details?: {
        member?: string; hresult?: number; argument?: number; cause?: unknown;
    });
    readonly code: ErrorCode;
    /** The member that was called. */
    readonly member?: string;
    /** The library's result, without sign. */
    readonly hresult?: number;
    /** The argument at fault, counted from 0. */
    readonly argument?: number;
}

/**
 * Connects to the tokens. Fails with "unavailable" after a second when the extension is not installed,
 * or the user has not allowed this site in it.
 */
export function connect(options?: CallOptions): Promise<TokenProvider>;

declare const zrkey: {
    readonly connect: typeof connect;
    readonly ZRKeyError: typeof ZRKeyError;
};
export default zrkey;
)";

constexpr std::size_t kColumns = 100;

/// A comment of at most kColumns columns.
std::string commentOf(std::string_view help) {
    const std::string line = std::string("    /** ").append(help).append(" */\n");
    if (line.size() <= kColumns + 1) {
        return line;
    }
    std::string text = "    /**\n";
    while (!help.empty()) {
        constexpr std::string_view kMargin = "     * ";
        constexpr std::size_t kWidth = kColumns - kMargin.size();
        const std::size_t end =
            help.size() <= kWidth ? help.size() : help.substr(0, kWidth + 1).rfind(' ');
        text.append(kMargin).append(help.substr(0, end)).append("\n");
        help.remove_prefix(std::min(end + 1, help.size()));
    }
    return text.append("     */\n");
}

const char* typeOf(const Parameter& parameter) {
    switch (parameter.kind) {
        case ParameterKind::kInteger:
            return "number";
        case ParameterKind::kText:
            return "string";
        case ParameterKind::kBytes:
            return "Bytes";
        case ParameterKind::kCertificate:
            return "Certificate";
        default:
            return "string | number";
    }
}

std::string objectOf(const Member& member) {
    if (*member.resultClass != ObjectClass::kCollection) {
        return nameOf(*member.resultClass);
    }
    return std::string_view(member.name) == "tokens" ? "Token[]" : "Certificate[]";
}

std::string resultOf(const Member& member) {
    switch (member.result) {
        case Kind::kBoolean:
            return "boolean";
        case Kind::kNumber:
            return "number";
        case Kind::kText:
            return "string";
        case Kind::kBytes:
            return "Uint8Array";
        case Kind::kTexts:
            return "string[]";
        case Kind::kObject:
            return objectOf(member);
        default:
            return "null";
    }
}

/// Parameters that may be left out are options.
std::string memberText(const Member& member) {
    std::string text = std::string("\n").append(commentOf(member.help));
    text.append("    ").append(member.name).append("(");
    const char* options = "CallOptions";
    for (const Parameter& parameter : member.usedParameters()) {
        if (parameter.isOptional) {
            options = "AlgorithmOptions";
        } else {
            text.append(parameter.name).append(": ").append(typeOf(parameter)).append(", ");
        }
    }
    text.append("options?: ").append(options).append("): Promise<").append(resultOf(member));
    return text.append(member.mayBeNull ? " | null" : "").append(">;\n");
}

std::string classText(const PageClass& row) {
    std::string text = "\n/** ";
    text.append(row.help).append(" */\nexport class ").append(nameOf(row.objectClass));
    text.append(" {\n    private constructor();\n").append(row.own);
    for (const Member& member : membersOf(row.objectClass)) {
        text.append(member.isForPages ? memberText(member) : "");
    }
    return text.append("}\n");
}

/// "rsa-sha1, rsa-sha256" as a type.
std::string algorithmType() {
    std::string text = "/** What sign and verify can do. */\nexport type Algorithm =\n    | \"";
    for (const char letter : algorithmNames()) {
        if (letter == ',') {
            text.append("\"\n    | \"");
        } else if (letter != ' ') {
            text.append(1, letter);
        }
    }
    return text.append("\";\n");
}

}  // namespace

std::string pageTypes() {
    std::string text = kBegin;
    text.append(algorithmType()).append(kCommon);
    for (const PageClass& row : kClasses) {
        text.append(classText(row));
    }
    return text;
}

}  // namespace zr::host
