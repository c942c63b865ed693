<?php
// SPDX-License-Identifier: MIT
//
// The system area of the administration layer. It stores settings, but never sets the clock or the name
// of the host that the sample appliance runs on.
declare(strict_types=1);

require __DIR__ . '/api.php';
require __DIR__ . '/settings.php';

const LANGUAGES = ['english', 'french', 'german', 'spanish', 'italian', 'chinese', 'traditional_chinese'];
const HOST_NAME = '/^[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?$/D';

function tovSetSysDate(string ...$date): void
{
    keepSetting('date', checkValue('a date', '#^\d\d/\d\d/\d\d\d\d$#D', $date));
}

function tovSetLanguage(string ...$language): void
{
    keepSetting('language', checkValue('a language', '/^(' . implode('|', LANGUAGES) . ')$/D', $language));
}

/** Prints the language twice, because its two readers look for different elements. */
function tovGetLanguage(string $path): void
{
    $language = setting('language');
    writeFile($path, "<languag>$language</languag>\n<language>$language</language>\n");
}

function tovSetHostname(string ...$name): void
{
    keepSetting('hostname', checkValue('a host name', HOST_NAME, $name));
}

function tovSetNmbdSysname(string ...$name): void
{
    keepSetting('nmbdSysname', checkValue('a NetBIOS name', HOST_NAME, $name));
}

function tovGetNmbdSysname(string $path): void
{
    writeFile($path, '<nmbdSysname>' . setting('nmbdSysname') . "</nmbdSysname>\n");
}

function tovSetWorkgroup(string ...$name): void
{
    keepSetting('workgroup', checkValue('a work group', HOST_NAME, $name));
}

/** One block of the report, with one value per line. */
function reportBlock(string $name, array $values): string
{
    $block = "  <$name>\n";
    foreach ($values as $tag => $value) {
        $block .= "    <$tag>$value</$tag>\n";
    }
    return "$block  </$name>\n";
}

function reportDisk(string $name, int $index, array $device): string
{
    return reportBlock($name, [
        'hddIndex' => $index,
        'manufacturerVid' => $device['vendor'],
        'manufacturerPid' => $device['model'],
        'modelInfo' => $device['serial'],
        'modelCap' => sprintf('%.4f', $device['capacity']),
        'modelDevName' => $device['node'],
    ]);
}

function reportPrinter(array $device): string
{
    return reportBlock('printerInfo', [
        'printerManufacture' => $device['vendor'],
        'modelInfo' => $device['serial'],
        'printerName' => $device['model'],
    ]);
}

/** Prints all attached devices: internal disks, USB disks, printers. */
function tovGetSystemStatus(string $path): void
{
    $report = "<systemStatus>\n";
    $order = "CASE kind WHEN 'internal' THEN 0 WHEN 'usb' THEN 1 ELSE 2 END, rowid";
    foreach (openDatabase()->query("SELECT * FROM device ORDER BY $order") as $index => $device) {
        $report .= match ($device['kind']) {
            'internal' => reportDisk('HDDInfo', $index, $device),
            'usb' => reportDisk('usbHdd', $index, $device),
            'printer' => reportPrinter($device),
        };
    }
    writeFile($path, "$report</systemStatus>\n");
}

serve([
    'tovGetSystemStatus' => tovGetSystemStatus(...),
    'tovSetSysDate' => tovSetSysDate(...),
    'tovSetLanguage' => tovSetLanguage(...),
    'tovGetLanguage' => tovGetLanguage(...),
    'tovSetHostname' => tovSetHostname(...),
    'tovSetNmbdSysname' => tovSetNmbdSysname(...),
    'tovGetNmbdSysname' => tovGetNmbdSysname(...),
    'tovSetWorkgroup' => tovSetWorkgroup(...),
], $argv);
