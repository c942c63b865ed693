<?php
// SPDX-License-Identifier: MIT
//
// Which users can reach the appliance from outside. If the file /etc/pelconfig/ra-exit has a number, both
// programs end with it at once; tests see then how their callers treat it.
declare(strict_types=1);

require __DIR__ . '/database.php';

const UNKNOWN_USER = 2;

if (is_file('/etc/pelconfig/ra-exit')) {
    exit((int) file_get_contents('/etc/pelconfig/ra-exit'));
}

function isOn(string $user): bool
{
    $query = openDatabase()->prepare('SELECT count(*) FROM remote_access WHERE user = ?');
    $query->execute([$user]);
    return $query->fetchColumn() > 0;
}

function switchAccess(string $user, bool $on): void
{
    openDatabase()
        ->prepare($on ? 'INSERT OR REPLACE INTO remote_access (user) VALUES (?)'
            : 'DELETE FROM remote_access WHERE user = ?')
        ->execute([$user]);
}
