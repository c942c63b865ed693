<?php
// SPDX-License-Identifier: MIT
//
// The share area of the administration layer.
declare(strict_types=1);

require __DIR__ . '/api.php';

/**
 * Writes the list of shares into a file: one element per line, indented by two, the property right
 * after the name.
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

/** Adds an internal share, "public" or "private", and makes its folder. */
function tovAddShare(string $name, string $property): void
{
    if (!preg_match('/^[^\x00-\x1F\x7F\/\\\\:*?"<>|]+$/D', $name) || in_array($name, ['.', '..'])) {
        throw new RuntimeException("\"$name\" cannot be the name of a share");
    }
    change(function (PDO $database) use ($name, $property): void {
        if (isKnown($database, 'share', $name)) {
            throw new RuntimeException("there is a share \"$name\" already");
        }
        $database->prepare("INSERT INTO share (name, property, location) VALUES (?, ?, 'internal')")
            ->execute([$name, $property]);
        if (!@mkdir("/share/$name")) {
            throw new RuntimeException("cannot make the folder \"/share/$name\"");
        }
    });
}

/** Gives a user access to a share, with the level "full" or "read". */
function tovSetUserSharePrivileges(string $user, string $share, string $level): void
{
    change(function (PDO $database) use ($user, $share, $level): void {
        foreach (['user' => $user, 'share' => $share] as $table => $name) {
            if (!isKnown($database, $table, $name)) {
                throw new RuntimeException("there is no $table \"$name\"");
            }
        }
        $database->prepare('INSERT OR REPLACE INTO privilege (user, share, level) VALUES (?, ?, ?)')
            ->execute([$user, $share, $level]);
    });
}

serve([
    'tovGetShareList' => tovGetShareList(...),
    'tovAddShare' => tovAddShare(...),
    'tovSetUserSharePrivileges' => tovSetUserSharePrivileges(...),
], $argv);
