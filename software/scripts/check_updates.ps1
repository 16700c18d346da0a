# Finds driver updates with the Windows Update agent and prints one JSON object on one line:
#   {"scannedDriversCount":143,"updates":[{"Title":...,"Description":...,"Categories":...,"KBArticles":...,"CurrentVersion":...,
#    "AvailableVersion":...,"ReleaseDate":...,"Severity":...,"HardwareId":...,"IsSkipped":false}]}
# Exits with code 0. If Windows Update cannot be searched, prints the reason as plain text instead and exits
# with code 1. For Windows PowerShell 5.1, without elevation. If dot-sourced, only defines its functions.

$ErrorActionPreference = 'Stop'
# Silences warnings and the like, which go to standard output too and would spoil the object.
$ProgressPreference = 'SilentlyContinue'
$WarningPreference = 'SilentlyContinue'
$VerbosePreference = 'SilentlyContinue'

# Returns a property as it is, or $null if the object lacks it. A COM object may throw in that case.
function Get-Property($Object, [string]$Name) {
    try { $Object.$Name } catch { $null }
}

function Get-Text($Object, [string]$Name) {
    [string](Get-Property $Object $Name)
}

# Joins the entries of a collection into one text. Returns $Fallback for none.
function Join-Entries($Collection, [scriptblock]$Format, [string]$Fallback) {
    $texts = @($Collection | Where-Object { $null -ne $_ } | ForEach-Object $Format)
    if ($texts.Count -gt 0) { $texts -join ', ' } else { $Fallback }
}

# Only the title holds the offered version: "Peat - System - 10.1.5.3", "Meadow System Driver Update
# (3.0.5.0)".
function Get-TitleVersion([string]$Title) {
    if ($Title -match '(\d+(\.\d+)+)\)?\s*$') { $Matches[1] } else { '' }
}

# Returns the version of the installed driver of the update's device, '' if there is no such device.
function Get-CurrentVersion($Drivers, [string]$HardwareId) {
    if ($HardwareId -eq '') { return '' }
    # A device's ID is one of its hardware IDs, perhaps with more detail, followed by an instance.
    $instance = [Management.Automation.WildcardPattern]::Escape($HardwareId) + '[\&]*'
    $driver = $Drivers |
        Where-Object { $_.HardWareID -eq $HardwareId -or $_.CompatID -eq $HardwareId -or $_.DeviceID -like $instance } |
        Select-Object -First 1
    Get-Text $driver 'DriverVersion'
}

function Get-ReleaseDate($Update) {
    foreach ($name in 'DriverVerDate', 'LastDeploymentChangeTime') {
        $date = Get-Property $Update $name
        # A date that was never set is in the year 1899.
        if ($date -is [datetime] -and $date.Year -gt 1980) { return $date.ToString('yyyy-MM-dd', [Globalization.CultureInfo]::InvariantCulture) }
    }
    ''
}

function ConvertTo-Entry($Update, $Drivers) {
    $title = Get-Text $Update 'Title'
    $hardwareId = Get-Text $Update 'DriverHardwareID'
    [ordered]@{
        Title            = $title
        Description      = Get-Text $Update 'Description'
        Categories       = Join-Entries (Get-Property $Update 'Categories') { $_.Name } 'Drivers'
        KBArticles       = Join-Entries (Get-Property $Update 'KBArticleIDs') { "KB$_" } 'None'
        CurrentVersion   = Get-CurrentVersion $Drivers $hardwareId
        AvailableVersion = Get-TitleVersion $title
        ReleaseDate      = Get-ReleaseDate $Update
        Severity         = Get-Text $Update 'MsrcSeverity'
        HardwareId       = $hardwareId
        IsSkipped        = [bool](Get-Property $Update 'IsHidden')
    }
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

# Returns one line of ASCII, which every console encoding prints alike.
function ConvertTo-AsciiJson($Report) {
    # Windows PowerShell may otherwise print a nested array as {"value":[...],"Count":2}.
    Remove-TypeData -TypeName System.Array -ErrorAction SilentlyContinue
    $json = ConvertTo-Json -InputObject $Report -Depth 5 -Compress
    [regex]::Replace($json, '[^\x20-\x7E]', { '\u{0:x4}' -f [int]$args[0].Value[0] })
}

# Returns the text to print and the exit code. $NewSession creates the update session.
function Get-Report([scriptblock]$NewSession) {
    $report = [ordered]@{}
    # The updates are worth showing even without the list of drivers.
    try { $drivers = @(Get-CimInstance -ClassName Win32_PnPSignedDriver) } catch { $drivers = @() }
    if ($drivers.Count -gt 0) { $report.scannedDriversCount = $drivers.Count }
    try {
        # Includes hidden updates, which the page marks.
        $report.updates = @(Find-Updates (& $NewSession) "IsInstalled=0 and Type='Driver'" |
            ForEach-Object { ConvertTo-Entry $_ $drivers })
    } catch {
        return @{ Text = "Windows Update could not be searched: $($_.Exception.Message)"; ExitCode = 1 }
    }
    @{ Text = ConvertTo-AsciiJson $report; ExitCode = 0 }
}

if ($MyInvocation.InvocationName -ne '.') {
    # Fails without a console. The reason is then in the console's code page.
    try { [Console]::OutputEncoding = New-Object Text.UTF8Encoding $false } catch { }
    $result = Get-Report {
        $session = New-Object -ComObject Microsoft.Update.Session
        $session.ClientApplicationID = 'Varnel'
        $session
    }
    $result.Text
    exit $result.ExitCode
}
