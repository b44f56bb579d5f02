/* The same as sign_file.cpp in C99, with zrkey_c.h:
 *     cc sign_file.c $(pkg-config --cflags --libs zrkey) -o sign_file_c
 *     ./sign_file_c MODULE FILE SIGNATURE-FILE
 * For MODULE, config.xml and the PIN see sign_file.cpp. All texts are ASCII here. */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zrkey/zrkey_c.h>

static void require(bool condition, const char* failure) {
    if (!condition) {
        fprintf(stderr, "%s\n", failure);
        exit(1); /* a host that goes on frees what it has */
    }
}

static void check(const char* operation, HRESULT result) {
    if (FAILED(result)) {
        fprintf(stderr, "%s failed: 0x%08X\n", operation, (unsigned int)result);
        exit(1);
    }
}

/* Calls an operation that has arguments: the object itself is the first one. */
#define CALL(object, operation, ...) \
    check(#operation, (object)->lpVtbl->operation((object), __VA_ARGS__))

/* The caller frees it with SysFreeString. */
static BSTR newText(const char* ascii) {
    BSTR text = SysAllocStringLen(NULL, (UINT)strlen(ascii));
    for (UINT i = 0; i < SysStringLen(text); ++i) {
        require(ascii[i] > 0, "a text is not ASCII");
        text[i] = (OLECHAR)ascii[i];
    }
    return text;
}

static VARIANT readFile(const char* path) {
    VARIANT data;
    VariantInit(&data);
    FILE* file = fopen(path, "rb");
    const long size = file && fseek(file, 0, SEEK_END) == 0 ? ftell(file) : -1;
    require(size >= 0 && size < 0x7FFFFFFF, "cannot read FILE");
    SAFEARRAYBOUND bound = {(ULONG)size, 0};
    rewind(file);
    data.vt = VT_ARRAY | VT_UI1;
    data.parray = SafeArrayCreate(VT_UI1, 1, &bound);
    require(data.parray != NULL, "out of memory");
    require(fread(data.parray->pvData, 1, (size_t)size, file) == (size_t)size, "cannot read FILE");
    fclose(file);
    return data;
}

/* Lists the certificates and opens the first. */
static IKeyCertificate* openCertificate(IKeyObject* token) {
    VARIANT value;
    IKeyContainer* container = NULL;
    IKeyCertificate* certificate = NULL;
    VariantInit(&value);
    CALL(token, EnumContainer, 0, &value);
    require(value.vt == (VT_ARRAY | VT_BSTR), "no certificate on the first token");
    for (ULONG i = 0; i < value.parray->rgsabound[0].cElements; ++i) {
        BSTR name = ((BSTR*)value.parray->pvData)[i];
        fputs("certificate: ", stdout);
        for (UINT k = 0; k < SysStringLen(name); ++k) {
            putchar((int)name[k]);
        }
        putchar('\n');
    }
    VariantClear(&value);
    value.vt = VT_I4;
    value.lVal = 0;
    CALL(token, OpenContainer, value, (void**)&container);
    CALL(container, GetKeyCert, true, (void**)&certificate);
    container->lpVtbl->Release(container);
    return certificate;
}

int main(int argc, char** argv) {
#ifdef SIGPIPE
    signal(SIGPIPE, SIG_IGN); /* a module may talk to a server that ends */
#endif
    require(argc == 4, "usage: sign_file_c MODULE FILE SIGNATURE-FILE");
    VARIANT signature, data = readFile(argv[2]);
    IClassFactory* factory = NULL;
    ITokenProvider* provider = NULL;
    check("ZCLGetClassObject",
          ZCLGetClassObject(&LIBID_ZRKey, &IID_IClassFactory, (void**)&factory));
    CALL(factory, CreateInstance, NULL, &IID_ITokenProvider, (void**)&provider);
    BSTR text = newText(argv[1]);
    check("Load (is MODULE relative, is config.xml here?)", provider->lpVtbl->Load(provider, text));
    SysFreeString(text);
    IKeyObject* token = NULL;
    check("OpenKey (is there a token?)", provider->lpVtbl->OpenKey(provider, 0, (void**)&token));
    require(token, "no token any more"); /* S_OK alone does not mean that one was opened */
    IKeyCertificate* certificate = openCertificate(token);
    char pin[200] = "";
    fputs("user PIN: ", stderr);
    require(scanf("%199[^\r\n]", pin) == 1, "no PIN on standard input");
    text = newText(pin);
    CALL(token, VerifyPIN, text, 0); /* 0: the user's PIN */
    SysFreeString(text);
    VariantInit(&signature);
    CALL(token, SignData, NULL, data, certificate, &signature); /* the algorithm is ignored */
    CALL(token, VerifyData, data, certificate, NULL, signature);
    FILE* file = fopen(argv[3], "wb");
    const size_t size = signature.parray->rgsabound[0].cElements;
    require(file && fwrite(signature.parray->pvData, size, 1, file) == 1 && fclose(file) == 0,
            "cannot write SIGNATURE-FILE");
    puts("signed and verified");
    VariantClear(&signature);
    VariantClear(&data);
    certificate->lpVtbl->Release(certificate);
    token->lpVtbl->Release(token);
    provider->lpVtbl->Release(provider);
    factory->lpVtbl->Release(factory);
    return 0;
}
