<?php
// SPDX-License-Identifier: MIT
//
// The share area of the administration layer.
declare(strict_types=1);

require __DIR__ . '/api.php';

/**
 * Writes the list of shares into a file: one element a line, indented by two, the property right
 * behind the name.
 */
function tovGetShareList(string $path): void
{
    $listing = "<sharelist>\n";
    foreach (openDatabase()->query('SELECT * FROM share ORDER BY rowid') as $share) {
        $listing .= "  <shareinfo>\n"
            . "  <sharename>{$share['name']}</sharename>\n"
            . "  <shareproperty>{$share['property']}</shareproperty>\n"
            . "  <sharelocation>{$share['location']}</sharelocation>\n"
            . "  </shareinfo>\n";
    }
    writeFile($path, $listing . "</sharelist>\n");
}

serve(['tovGetShareList' => tovGetShareList(...)], $argv);
