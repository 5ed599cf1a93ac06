# SPDX-License-Identifier: MIT
$ErrorActionPreference = 'Stop'
# What the package has installed is for everybody; what the user has installed is the user's.
$keys = Get-UninstallRegistryKey -SoftwareName 'pixkit' | Where-Object { $_.PSPath -like '*HKEY_LOCAL_MACHINE*' }
foreach ($key in $keys) {
    $folder = $key.InstallLocation
    $file = Join-Path $folder 'uninstall.exe'
    # With _?= the uninstaller does not go on in a copy of itself: it can be waited for, but not delete itself.
    Uninstall-ChocolateyPackage -PackageName 'pixkit' -FileType 'exe' -SilentArgs "/S _?=$folder" -File $file
    Remove-Item -LiteralPath $file
    # Stays where somebody put something into it.
    if (-not (Get-ChildItem -LiteralPath $folder -Force)) { Remove-Item -LiteralPath $folder }
}
