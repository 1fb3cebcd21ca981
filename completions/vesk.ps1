# Completion of vesk's command line in PowerShell.
# Run it in your profile ($PROFILE): . C:\path\to\vesk.ps1

Register-ArgumentCompleter -Native -CommandName vesk, vesk.exe -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)

    $words = @($commandAst.CommandElements |
        Select-Object -Skip 1 |
        Where-Object { $_.Extent.StartOffset -lt $cursorPosition } |
        ForEach-Object { if ($null -ne $_.Value) { [string]$_.Value } else { $_.Extent.Text } })
    # Before 7.3 an empty argument is lost, and so are double quotes without a backslash.
    $legacy = -not $PSNativeCommandArgumentPassing -or $PSNativeCommandArgumentPassing -eq 'Legacy'
    if ($wordToComplete -eq '') {
        $words += if ($legacy) { '""' } else { '' }
    }
    if ($legacy) {
        $words = @($words | ForEach-Object { if ($_ -eq '""') { $_ } else { $_.Replace('"', '\"') } })
    }
    vesk --complete $words 2>$null | ForEach-Object {
        $text, $description = $_ -split "`t", 2
        $inserted = $text
        if ($text -match '[\s"`$&|;<>(){}@#]') {
            $quote = if ($legacy) { '\"' } else { '"' }
            $inserted = "'" + $text.Replace("'", "''").Replace('"', $quote) + "'"
        }
        if (-not $description) { $description = $text }
        [System.Management.Automation.CompletionResult]::new(
            $inserted, $text, 'ParameterValue', $description)
    }
}
