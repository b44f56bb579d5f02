// The types of zrkey.js. This file is written by "zrkey --generate page-types" from the table of
// members in host/objects/. Every call is refused with a ZRKeyError.

/** Bytes: a Uint8Array or another view, or a buffer. */
export type Bytes = ArrayBuffer | ArrayBufferView;

/** What sign and verify can do. */
export type Algorithm =
    | "rsa-sha1"
    | "rsa-sha256"
    | "rsa-sha384"
    | "rsa-sha512"
    | "rsa-pss-sha256"
    | "ecdsa-sha256"
    | "ecdsa-sha384";

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

/** The tokens of the computer, and the connection to them. */
export class TokenProvider {
    private constructor();

    /** Ends the connection: every token is logged out, and no object can be used afterwards. */
    close(): void;
    /** Resolves when the connection has ended: to null after close(), otherwise to the reason. */
    readonly closed: Promise<ZRKeyError | null>;

    /** Returns "PKCS#11". */
    GetName(options?: CallOptions): Promise<string>;

    /** Counts the slots that contain a token. */
    GetKeyCount(options?: CallOptions): Promise<number>;

    /**
     * Opens the token in a slot, counted from 0 among the slots that contain one; null when the
     * slots changed during the call.
     */
    OpenKey(index: number, options?: CallOptions): Promise<Token | null>;

    /**
     * Opens all tokens; leaves out slots that cannot be opened and tokens that are not initialised.
     */
    tokens(options?: CallOptions): Promise<Token[]>;

    /**
     * Releases the provider; its tokens stay usable. Its module ends when no provider and no token
     * of it is left.
     */
    Close(options?: CallOptions): Promise<boolean>;
}

/** A token. */
export class Token {
    private constructor();

    /** Asks the user for the PIN, in a window outside the page, and logs in. */
    login(options?: CallOptions): Promise<boolean>;

    /** Logs out; succeeds also when nobody is logged in. */
    logout(options?: CallOptions): Promise<boolean>;

    /** Reads the label, without the blanks at its end. */
    GetLabel(options?: CallOptions): Promise<string>;

    /** Reads the serial number. */
    GetSerialNumber(options?: CallOptions): Promise<string>;

    /** Reads the manufacturer. */
    GetManufacturerID(options?: CallOptions): Promise<string>;

    /** Reads the model. */
    GetModelID(options?: CallOptions): Promise<string>;

    /** Reads the size of the public memory in bytes; 4294967295 when it is not reported. */
    GetTotalSize(options?: CallOptions): Promise<number>;

    /** Reads the free public memory in bytes; 4294967295 when it is not reported. */
    GetFreeSize(options?: CallOptions): Promise<number>;

    /**
     * Lists the names of the containers, one for each certificate; a module that fails ends the
     * list early.
     */
    EnumContainer(options?: CallOptions): Promise<string[]>;

    /** Counts the containers; a module that fails ends the count early. */
    GetContainerCount(options?: CallOptions): Promise<number>;

    /**
     * Opens a container by its name, or by its index from 0 in the list of EnumContainer; the first
     * one when several have the name.
     */
    OpenContainer(which: string | number, options?: CallOptions): Promise<Container>;

    /** Opens the certificates of all containers, in the order of EnumContainer. */
    certificates(options?: CallOptions): Promise<Certificate[]>;

    /** Reads a certificate, in DER: GetCertData of the certificate. */
    GetCertData(cert: Certificate, options?: CallOptions): Promise<Uint8Array>;

    /**
     * Reads the ID of the first public key whose type, read as text, equals the name of the
     * certificate. The type of an RSA key is the empty text, so a certificate with a name finds no
     * RSA key.
     */
    GetPubKeyData(cert: Certificate, options?: CallOptions): Promise<Uint8Array>;

    /** Signs data with the key of a certificate, after a login: RSA with SHA-1 (PKCS #1 v1.5). */
    SignData(data: Bytes, cert: Certificate, options?: CallOptions): Promise<Uint8Array>;

    /**
     * Verifies a signature of SignData with the public key on the token, after a login; fails with
     * E_FAIL when it is not valid.
     */
    VerifyData(data: Bytes, cert: Certificate, signature: Bytes, options?: CallOptions): Promise<boolean>;

    /**
     * Signs data with the key of a certificate, after a login, by rsa-sha256 when no algorithm is
     * named; checks the signature with the key in the certificate; ECDSA gives DER.
     */
    sign(data: Bytes, cert: Certificate, options?: AlgorithmOptions): Promise<Uint8Array>;

    /** Returns whether a signature of sign is valid, by the key in the certificate. */
    verify(data: Bytes, cert: Certificate, signature: Bytes, options?: AlgorithmOptions): Promise<boolean>;

    /** Returns "MD5". */
    GetDigestMethod(options?: CallOptions): Promise<string>;

    /** Computes a digest; the only method is "MD5". */
    DigestData(method: string, data: Bytes, options?: CallOptions): Promise<Uint8Array>;

    /** Returns the text of "algo" in config.xml. */
    GetSignAlgo(options?: CallOptions): Promise<string>;

    /** Returns the text of "algo" in config.xml. */
    GetAlgoList(options?: CallOptions): Promise<string>;

    /**
     * Releases the token: it logs out and closes its session when nothing opened from it is left.
     */
    Close(options?: CallOptions): Promise<boolean>;
}

/** A certificate on a token, with its keys. */
export class Container {
    private constructor();

    /** Returns the certificate of the container. */
    GetKeyCert(options?: CallOptions): Promise<Certificate>;

    /** Reads the type of the certificate as text: empty for X.509. */
    GetType(options?: CallOptions): Promise<string>;

    /** Releases the container; its certificate stays usable. */
    Close(options?: CallOptions): Promise<boolean>;
}

/** A certificate on a token. */
export class Certificate {
    private constructor();

    /** Reads the certificate, in DER; the first one when several have its name. */
    GetCertData(options?: CallOptions): Promise<Uint8Array>;

    /** Returns the name of the container. */
    GetCertID(options?: CallOptions): Promise<string>;

    /** Reads the certificate as PEM. */
    pem(options?: CallOptions): Promise<string>;

    /** Reads the subject, such as "CN=Erika"; null when it is not readable as X.509. */
    subject(options?: CallOptions): Promise<string | null>;

    /** Releases the certificate. */
    Close(options?: CallOptions): Promise<boolean>;
}
