<?php
// SPDX-License-Identifier: MIT
//
// The appliance's settings: one SQLite database that every administration script shares.
declare(strict_types=1);

const DATABASE = '/usr/private/appliance.db';

const SCHEMA = <<<'SQL'
    CREATE TABLE IF NOT EXISTS share (
        name     TEXT NOT NULL PRIMARY KEY COLLATE NOCASE,
        property TEXT NOT NULL CHECK (property IN ('public', 'private')),
        location TEXT NOT NULL CHECK (location IN ('internal', 'external'))
    );
    CREATE TABLE IF NOT EXISTS user (
        name TEXT NOT NULL PRIMARY KEY
    );
    SQL;

function openDatabase(): PDO
{
    $database = new PDO('sqlite:' . DATABASE);
    $database->setAttribute(PDO::ATTR_DEFAULT_FETCH_MODE, PDO::FETCH_ASSOC);
    $database->exec('PRAGMA busy_timeout = 5000');
    $database->exec(SCHEMA);
    return $database;
}
