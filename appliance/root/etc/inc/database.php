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
        name TEXT NOT NULL PRIMARY KEY COLLATE NOCASE
    );
    CREATE TABLE IF NOT EXISTS privilege (
        user  TEXT NOT NULL,
        share TEXT NOT NULL COLLATE NOCASE,
        level TEXT NOT NULL CHECK (level IN ('full', 'read')),
        PRIMARY KEY (user, share)
    );
    CREATE TABLE IF NOT EXISTS setting (
        name  TEXT NOT NULL PRIMARY KEY,
        value TEXT NOT NULL
    );
    CREATE TABLE IF NOT EXISTS remote_access (
        user TEXT NOT NULL PRIMARY KEY
    );
    CREATE TABLE IF NOT EXISTS device (
        kind     TEXT NOT NULL CHECK (kind IN ('internal', 'usb', 'printer')),
        vendor   TEXT NOT NULL,
        model    TEXT NOT NULL,
        serial   TEXT NOT NULL,
        capacity REAL, -- in GB; printers have none
        node     TEXT NOT NULL
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

/** Whether a table has a row of this name. */
function isKnown(PDO $database, string $table, string $name): bool
{
    $query = $database->prepare("SELECT count(*) FROM $table WHERE name = ?");
    $query->execute([$name]);
    return $query->fetchColumn() > 0;
}

/** Makes several changes to the database, either all or none. */
function change(callable $work): void
{
    $database = openDatabase();
    $database->exec('BEGIN IMMEDIATE');
    try {
        $work($database);
        $database->exec('COMMIT');
    } catch (Throwable $failure) {
        $database->exec('ROLLBACK');
        throw $failure;
    }
}
