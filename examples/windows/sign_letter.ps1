# Not run by the tests: there is no PowerShell where they run. They check the names of the members.
#
# Signs a file with the first certificate of a token, checks the signature, and writes signature and
# certificate beside the file. It needs a 64-bit PowerShell.
#
#     .\sign_letter.ps1 -File letter.txt [-Module C:\path\of\module.dll] [-Serial NUMBER]
#
# Without -Module, the variable ZRKEY_MODULE names the PKCS #11 module of the token's maker. Without
# -Serial there must be one token. The PIN is asked for and tried once.
param(
    [Parameter(Mandatory)] [string] $File,
    [string] $Module = $env:ZRKEY_MODULE,
    [string] $Serial
)
$ErrorActionPreference = 'Stop'
$user = 0 # the kind of PIN; 1 is the security officer's
$algorithm = 'rsa-sha256'

# Reads the file first: a mistake in its name must not cost a login. .NET does not know the current
# folder of PowerShell, so the paths are absolute.
$path = (Resolve-Path -LiteralPath $File).ProviderPath
[byte[]] $letter = [IO.File]::ReadAllBytes($path)

$provider = New-Object -ComObject ZRKey.TokenProvider
[void] $provider.Load((Resolve-Path -LiteralPath $Module).ProviderPath)
$found = @(foreach ($token in $provider.tokens) {
        if (-not $Serial -or $token.GetSerialNumber() -eq $Serial) { $token }
    })
if ($found.Count -ne 1) {
    throw "$($found.Count) tokens match; name one by its serial number"
}
$token = $found[0]

$pin = Read-Host -AsSecureString "PIN of $($token.GetLabel())"
$text = [Net.NetworkCredential]::new('', $pin).Password
if (-not $text) {
    throw 'no PIN' # the token would count it as a wrong PIN
}
try {
    [void] $token.VerifyPIN($text, $user)
} catch [Runtime.InteropServices.COMException] {
    # The library's result; 0x80004005 is E_FAIL.
    if ($_.Exception.GetBaseException().HResult -ne 0x80004005) { throw }
    throw 'the token refused the PIN'
}

$certificates = $token.certificates
if ($certificates.Count -eq 0) {
    throw 'the token has no certificate'
}
$certificate = $certificates.Item(0)
[byte[]] $signature = $token.sign($letter, $certificate, $algorithm)
if (-not $token.verify($letter, $certificate, $signature, $algorithm)) {
    throw 'the signature is not valid'
}
[IO.File]::WriteAllBytes("$path.sig", $signature)
[IO.File]::WriteAllText("$path.pem", $certificate.pem)
"signed $File as $($certificate.subject)"
