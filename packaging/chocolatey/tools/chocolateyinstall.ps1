# SPDX-License-Identifier: MIT
$ErrorActionPreference = 'Stop'
# Chocolatey runs as administrator: for everybody on the machine.
Install-ChocolateyPackage -PackageName 'pixkit' -FileType 'exe' -SilentArgs '/S /ALLUSERS' `
    -Url '@URL@/pixkit-@VERSION@-setup.exe' -Checksum '@SETUP_SHA256@' -ChecksumType 'sha256'
