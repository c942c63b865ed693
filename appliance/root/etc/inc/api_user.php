<?php
// SPDX-License-Identifier: MIT
//
// The user area of the administration layer.
declare(strict_types=1);

require __DIR__ . '/api.php';
require __DIR__ . '/accounts.php';

/** Writes the list of users into a file: one element per line. */
function tovGetUsers(string $path): void
{
    $listing = "<userlist>\n";
    foreach (openDatabase()->query('SELECT name FROM user ORDER BY rowid') as $user) {
        $listing .= "  <username>{$user['name']}</username>\n";
    }
    writeFile($path, $listing . "</userlist>\n");
}

/** Adds an account. */
function tovAddUser(string $name, string $password): void
{
    change(fn (PDO $database) => addAccount($database, $name, $password));
}

serve([
    'tovGetUsers' => tovGetUsers(...),
    'tovAddUser' => tovAddUser(...),
], $argv);
