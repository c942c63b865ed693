<?php
// SPDX-License-Identifier: MIT
//
// Gives a new appliance a past: a history of some months, up to yesterday, in which the disk fills slowly.
declare(strict_types=1);

const HISTORY_FILE = '/var/lib/vokcontrol/history.db';
const HISTORY_DAYS = 200;
const DAY = 86400;
const DISK_KIB = 4_000_000;

/** The tables that vokctl makes in an empty history. */
const HISTORY_TABLES = <<<'SQL'
    CREATE TABLE publication (published INTEGER PRIMARY KEY, kept INTEGER NOT NULL, listed INTEGER NOT NULL, total INTEGER, used INTEGER, free INTEGER);
    CREATE TABLE share (id INTEGER PRIMARY KEY, name BLOB NOT NULL UNIQUE, number INTEGER, made INTEGER, first INTEGER NOT NULL);
    CREATE TABLE former (share INTEGER NOT NULL, renamed INTEGER NOT NULL, name BLOB NOT NULL);
    CREATE TABLE size (share INTEGER, published INTEGER, used INTEGER, unit INTEGER, state INTEGER, day INTEGER, PRIMARY KEY (share, published)) WITHOUT ROWID;
    CREATE TABLE event (happened INTEGER NOT NULL, kind TEXT NOT NULL);
    PRAGMA user_version = 1;
    SQL;

/**
 * name => what the share used so many days ago, in KiB; null if it was not there. All of them end at what the
 * seed has put into the shares' folders.
 */
$courses = [
    'Documents'     => static fn (int $ago): ?int => 600 - 2 * min($ago, 180) - ($ago % 7 < 3 ? 0 : 5),
    'Photos'        => static fn (int $ago): ?int => 6_000 - 500 * intdiv($ago, 21),
    'Projects'      => static fn (int $ago): ?int => $ago > 12 ? 420 - $ago : 164,
    'Media'         => static fn (int $ago): ?int => max(1_200_000 - 6_000 * $ago - 3_500 * max($ago - 33, 0), 20_000),
    'Empty'         => static fn (int $ago): ?int => 0,
    'Family Videos' => static fn (int $ago): ?int => 262_144 - 18_000 * intdiv($ago, 16),
    'Économies'     => static fn (int $ago): ?int => $ago < 24 ? 900 - 25 * $ago : null,
    'Accounts'      => static fn (int $ago): ?int => 1_100,
    'Old Laptop'    => static fn (int $ago): ?int => $ago > 17 ? 38_000 : null,
];

/** name => [days ago, the name before]: shares that were renamed */
$renamed = ['Photos' => [75, 'Pictures']];

/** name => [days between backups, their state] */
$habits = ['Documents' => [7, 1], 'Photos' => [2, 0], 'Family Videos' => [14, 1], 'Old Laptop' => [30, 1]];

/** KiB as the number and the unit's place in the list K, M, G that a status has. */
function unitsOf(int $kibibytes): array
{
    return match (true) {
        $kibibytes > 1_000_000 => [intdiv($kibibytes, 1_000_000), 2],
        $kibibytes > 1024 => [intdiv($kibibytes, 1000), 1],
        default => [$kibibytes, 0],
    };
}

/** Writes what was published on one day. */
function remember(PDO $history, int $published, int $ago, array $courses, array $habits): void
{
    $sizes = array_filter(array_map(static fn (callable $course) => $course($ago), $courses), is_int(...));
    $used = array_sum($sizes);
    // The first entry of a week is kept for ever, that of a day for two years.
    $kept = gmdate('N', $published) === '1' || $ago === HISTORY_DAYS ? 2 : 1;
    $history->prepare('INSERT INTO publication VALUES (?, ?, 1, ?, ?, ?)')
        ->execute([$published, $kept, DISK_KIB, $used, DISK_KIB - $used]);
    $insert = $history->prepare('INSERT INTO size SELECT id, ?, ?, ?, ?, ? FROM share WHERE name = CAST(? AS BLOB)');
    foreach ($sizes as $name => $kibibytes) {
        [$days, $state] = $habits[$name] ?? [null, null];
        $backup = $days ? intdiv($published, DAY) - ($days - $ago % $days) % $days : null;
        $insert->execute([$published, ...unitsOf($kibibytes), $state, $backup, $name]);
    }
}

/** The days ago at which a share was there, the oldest first. */
function daysOf(callable $course): array
{
    return array_values(array_filter(range(HISTORY_DAYS, 1), static fn (int $ago) => $course($ago) !== null));
}

$now = time();
$publishedAt = static fn (int $ago): int => $now - $now % DAY - $ago * DAY + 3 * 3600;
$history = new PDO('sqlite:' . HISTORY_FILE);
$history->exec(HISTORY_TABLES);
$history->beginTransaction();
foreach ($courses as $name => $course) {
    $history->prepare('INSERT INTO share (name, first) VALUES (CAST(? AS BLOB), ?)')
        ->execute([$name, $publishedAt(daysOf($course)[0])]);
}
foreach ($renamed as $name => [$ago, $former]) {
    $history->prepare('INSERT INTO former SELECT id, ?, CAST(? AS BLOB) FROM share WHERE name = CAST(? AS BLOB)')
        ->execute([$publishedAt($ago), $former, $name]);
}
for ($ago = HISTORY_DAYS; $ago > 0; --$ago) {
    remember($history, $publishedAt($ago), $ago, $courses, $habits);
}
$history->commit();
chmod(HISTORY_FILE, 0600);
