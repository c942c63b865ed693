<?php
// SPDX-License-Identifier: MIT
//
// Accounts are in two places: their names in the database, their passwords in the SMB password file.
declare(strict_types=1);

const SMB_PASSWORD_FILE = '/usr/private/smbpasswd';
const FIRST_USER_ID = 1000;

/** MD4 over the password in UTF-16LE; each of its bytes counts as a character of ISO-8859-1. */
function ntHash(string $password): string
{
    return strtoupper(hash('md4', preg_replace('/./s', "$0\0", $password)));
}

/** One line, as Samba's own tools write it; there is no LAN Manager hash any more. */
function smbPasswordLine(string $name, int $id, string $password): string
{
    return sprintf("%s:%d:%s:%s:[U          ]:LCT-%08X:\n",
        $name, $id, str_repeat('X', 32), ntHash($password), time());
}

function addAccount(PDO $database, string $name, string $password): void
{
    // A line that starts with "#" would be a comment in the password file.
    if (!preg_match('/^(?!#)[^\x00-\x1F\x7F:\/"<>&]+$/D', $name) || $name === 'guest') {
        throw new RuntimeException("\"$name\" cannot be the name of a user");
    }
    if (isKnown($database, 'user', $name)) {
        throw new RuntimeException("there is a user \"$name\" already");
    }
    $database->prepare('INSERT INTO user (name) VALUES (?)')->execute([$name]);
    $line = smbPasswordLine($name, FIRST_USER_ID + (int) $database->lastInsertId(), $password);
    umask(0077);
    if (@file_put_contents(SMB_PASSWORD_FILE, $line, FILE_APPEND | LOCK_EX) !== strlen($line)) {
        throw new RuntimeException('cannot write "' . SMB_PASSWORD_FILE . '"');
    }
}
