# SPDX-License-Identifier: MIT
$ErrorActionPreference = 'Stop'
foreach ($key in Get-UninstallRegistryKey -SoftwareName 'pixkit') {
    $file = Join-Path $key.InstallLocation 'uninstall.exe'
    Uninstall-ChocolateyPackage -PackageName 'pixkit' -FileType 'exe' -SilentArgs "/S _?=$($key.InstallLocation)" -File $file
}
