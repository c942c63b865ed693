<?php
// SPDX-License-Identifier: MIT
//
// Settings, each with a name and a value.
declare(strict_types=1);

function setting(string $name): string
{
    $query = openDatabase()->prepare('SELECT value FROM setting WHERE name = ?');
    $query->execute([$name]);
    return (string) $query->fetchColumn();
}

function keepSetting(string $name, string $value): void
{
    openDatabase()->prepare('INSERT OR REPLACE INTO setting (name, value) VALUES (?, ?)')
        ->execute([$name, $value]);
}

/** The only argument of a function that stores a setting. Fails if it does not match a pattern. */
function checkValue(string $what, string $pattern, array $arguments): string
{
    if (count($arguments) !== 1 || !preg_match($pattern, $arguments[0])) {
        throw new RuntimeException('"' . implode(' ', $arguments) . "\" cannot be $what");
    }
    return $arguments[0];
}
