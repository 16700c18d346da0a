# Installs the driver update whose title equals -UpdateTitle exactly, with the Windows Update agent, and
# prints one line per step. Several devices can have an update of the same title; it installs all of them.
# Prints SYSTEM_REBOOT_REQUIRED if Windows must be restarted.
# Exit codes: 0 installed, 2 no such update, 3 download failed, 4 installation failed, 5 no administrator rights,
# 6 search failed, 7 no Windows Update agent. PowerShell itself exits with 1 if it cannot run the script.
# For Windows PowerShell 5.1, as an administrator. If dot-sourced, only defines its functions.

param([string]$UpdateTitle)

$ErrorActionPreference = 'Stop'
$ProgressPreference = 'SilentlyContinue'

$ExitInstalled = 0
$ExitNotFound = 2
$ExitDownloadFailed = 3
$ExitInstallFailed = 4
$ExitNoRights = 5
$ExitSearchFailed = 6
$ExitNoAgent = 7

# Writes straight to standard output, so the reader gets the line immediately and it is not part of a
# function's result.
function Write-Line([string]$Text) {
    [Console]::Out.WriteLine($Text)
}

function Test-Administrator {
    $user = New-Object Security.Principal.WindowsPrincipal ([Security.Principal.WindowsIdentity]::GetCurrent())
    $user.IsInRole([Security.Principal.WindowsBuiltInRole]::Administrator)
}

# Returns true if Windows or the update agent denied access.
function Test-AccessDenied([Exception]$Exception) {
    $Exception.GetBaseException().HResult -in 0x80070005, 0x80240044
}

# Finds the updates that meet the criteria. The agent omits optional drivers unless asked for them; an older
# agent does not know how.
function Find-Updates($Session, [string]$Criteria) {
    $searcher = $Session.CreateUpdateSearcher()
    try {
        $result = $searcher.Search("($Criteria) or ($Criteria and DeploymentAction='OptionalInstallation')")
    } catch {
        if ($_.Exception.GetBaseException().HResult -ne 0x80240032) { throw } # invalid criteria
        $result = $searcher.Search($Criteria)
    }
    $result.Updates | Where-Object { $null -ne $_ }
}

function New-Collection($Updates) {
    $collection = New-Object -ComObject Microsoft.Update.UpdateColl
    foreach ($update in $Updates) { [void]$collection.Add($update) }
    # The comma keeps PowerShell from unrolling the collection.
    , $collection
}

# Returns the code of the first of $Count updates that failed, or '' if all succeeded (2) or succeeded with
# errors (3).
function Get-FailureCode($Result, [int]$Count) {
    for ($i = 0; $i -lt $Count; $i++) {
        $one = $Result.GetUpdateResult($i)
        if ($one.ResultCode -notin 2, 3) { return '0x{0:X8}' -f $one.HResult }
    }
    ''
}

# Returns the exit code. Every failure prints a line.
function Install-Driver($Session, [string]$Title) {
    $exitCode = $ExitSearchFailed
    try {
        Write-Line "Searching Windows Update for the driver: $Title"
        $chosen = @(Find-Updates $Session "IsInstalled=0 and Type='Driver' and IsHidden=0" |
            Where-Object { $_.Title -ceq $Title })
        if ($chosen.Count -eq 0) {
            Write-Line 'Windows Update does not offer this driver (any more).'
            return $ExitNotFound
        }

        $exitCode = $ExitDownloadFailed
        foreach ($update in $chosen) {
            if (-not $update.EulaAccepted) {
                Write-Line 'Accepting the licence.'
                [void]$update.AcceptEula() # its result must not become part of the exit code
            }
        }
        Write-Line "Downloading ($($chosen.Count))..."
        $downloader = $Session.CreateUpdateDownloader()
        $downloader.Updates = New-Collection $chosen
        $failure = Get-FailureCode ($downloader.Download()) $chosen.Count
        if ($failure -ne '') {
            Write-Line "The download failed: $failure"
            return $exitCode
        }
        Write-Line 'Downloaded.'

        $exitCode = $ExitInstallFailed
        $installer = $Session.CreateUpdateInstaller()
        if ($installer.RebootRequiredBeforeInstallation) {
            Write-Line 'Windows must be restarted before it installs anything else: SYSTEM_REBOOT_REQUIRED'
            return $exitCode
        }
        Write-Line 'Installing...'
        $installer.Updates = New-Collection $chosen
        $result = $installer.Install()
        if ($result.RebootRequired) { Write-Line 'Restart Windows to finish: SYSTEM_REBOOT_REQUIRED' }
        $failure = Get-FailureCode $result $chosen.Count
        if ($failure -ne '') {
            Write-Line "The installation failed: $failure"
            return $exitCode
        }
        Write-Line 'Installed.'
        $ExitInstalled
    } catch {
        Write-Line "Stopped by an error: $($_.Exception.Message)"
        if (Test-AccessDenied $_.Exception) { $ExitNoRights } else { $exitCode }
    }
}

if ($MyInvocation.InvocationName -ne '.') {
    # Fails without a console. The text is then in the console's code page.
    try { [Console]::OutputEncoding = New-Object Text.UTF8Encoding $false } catch { }
    if (-not (Test-Administrator)) {
        Write-Line 'Installing a driver needs administrator rights.'
        exit $ExitNoRights
    }
    try {
        $session = New-Object -ComObject Microsoft.Update.Session
        $session.ClientApplicationID = 'Varnel'
    } catch {
        Write-Line "The Windows Update agent is not available: $($_.Exception.Message)"
        exit $ExitNoAgent
    }
    exit (Install-Driver $session $UpdateTitle)
}
