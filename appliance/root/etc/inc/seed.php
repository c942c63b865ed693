<?php
// SPDX-License-Identifier: MIT
//
// Fills a new appliance: shares of every kind, with sizes just below and above each unit, and backup
// reports for some of them.
declare(strict_types=1);

require __DIR__ . '/accounts.php';
require __DIR__ . '/database.php';

const KIB = 1024;
const STATUS_FOLDER = '/etc/pelconfig/vokcontrol';
const BACKUP_FOLDER = STATUS_FOLDER . '/__bksts';
const VARIABLE_FILE = '/etc/pelconfig/system_var';
const LARGE_FILE_KIB = 1_200_000;
const SPARE_KIB = 500_000;

/** Makes a file that uses its whole size on the disk, without writing all of it. */
function allocate(string $path, int $kibibytes): void
{
    exec('fallocate -l ' . $kibibytes * KIB . ' ' . escapeshellarg($path), result_code: $code);
    if ($code !== 0) {
        throw new RuntimeException("cannot allocate $kibibytes KiB for \"$path\"");
    }
}

function writeText(string $folder): void
{
    $sentence = "The appliance keeps what its people give it.\n";
    foreach (['letter', 'minutes', 'notes'] as $name) {
        file_put_contents("$folder/$name.txt", str_repeat($sentence, 4500));
    }
}

function writeManySmallFiles(string $folder): void
{
    for ($number = 1; $number <= 1500; ++$number) {
        file_put_contents(sprintf('%s/IMG_%04d.jpg', $folder, $number), str_repeat("$number\n", 200));
    }
}

function writeDeepTree(string $folder): void
{
    for ($depth = 1; $depth <= 40; ++$depth) {
        $folder .= "/level-$depth";
        mkdir($folder);
        file_put_contents("$folder/README", "This is level $depth.\n");
    }
}

/** Makes one file of more than a million KiB, or a smaller one if the disk is too full for it. */
function writeLargeFile(string $folder): void
{
    $size = LARGE_FILE_KIB;
    if (getenv('SCENE') !== 'full-disk' && disk_free_space($folder) < ($size + SPARE_KIB) * KIB) {
        fwrite(STDERR, "The disk is nearly full: the share \"Media\" stays below 1 G this time.\n");
        $size = 64 * KIB;
    }
    allocate("$folder/film.mkv", $size);
}

/** name => [property, location, what fills its folder] */
$shares = [
    'Documents'     => ['public', 'internal', writeText(...)],
    'Photos'        => ['public', 'internal', writeManySmallFiles(...)],
    'Projects'      => ['private', 'internal', writeDeepTree(...)],
    'Media'         => ['public', 'internal', writeLargeFile(...)],
    'Empty'         => ['private', 'internal', static fn (string $folder) => null],
    'Family Videos' => ['private', 'internal', static fn (string $f) => allocate("$f/garden.mp4", 262_144)],
    'Économies'     => ['private', 'internal', static fn (string $f) => allocate("$f/budget.ods", 900)],
    'Accounts'      => ['private', 'internal', static fn (string $f) => allocate("$f/ledger.db", 1100)],
    'USB Stick'     => ['public', 'external', writeText(...)],
];

if (getenv('SCENE') === 'many-shares') {
    for ($number = 1; $number <= 300; ++$number) {
        $shares["Archive $number"] = ['private', 'internal', static fn (string $f) => allocate("$f/all.tar", $number)];
    }
}

/** name => the line of its backup status file: a state digit and the date as MMDDYYYY */
$backups = [
    'Documents'     => '111182026',
    'Photos'        => '011202026',
    'Family Videos' => '211152026',
    'Économies'     => '110312026',
    'Projects'      => "backup did not finish\n",
];

/** name => password */
$users = ['anna' => 'appliance', 'bob' => 'storage', 'Élise' => 'network'];

/** The one of these accounts that may change things on the web pages. */
const ADMINISTRATOR = 'anna';
const ADMINISTRATORS_FILE = '/var/lib/vokcontrol/administrators';

/**
 * [kind, vendor, model, serial, capacity in GB, node]; a printer's model is its name. The printer's slot for
 * memory cards is a disk with the same serial number.
 */
$devices = [
    ['internal', 'Seagate', 'ST500DM002', 'Z2AXE4W7', 500.107, 'sda'],
    ['internal', 'Seagate', 'ST500DM002', 'Z2AXF0K1', 500.107, 'sdb'],
    ['usb', 'Brother', 'MFC card slot', 'L5J247193', 31.0126, 'sdc'],
    ['printer', 'Brother', 'MFC-7360N series', 'L5J247193', null, 'usblp0'],
];

/** The appliance's variables: name => value */
$variables = [
    'pel_pubshare_name' => 'Documents',
    'default_public_share_name_en' => 'Public',
    'default_public_share_name_fr' => 'Publique',
    'default_public_share_name_ge' => 'Öffentlich',
    'default_public_share_name_it' => 'Pubblico',
    'default_public_share_name_sp' => 'Público',
    'firsttime' => '1',
    'raclient_raenabled' => '1',
    'ra_signUpUrl' => 'https://remote.example/sign-up',
    'ra_signInUrl' => 'https://remote.example/sign-in',
];

/** The administration scripts' settings: name => value */
$settings = ['language' => 'english', 'hostname' => 'appliance', 'nmbdSysname' => 'appliance'];

umask(0022);
mkdir(BACKUP_FOLDER, recursive: true);
foreach ($backups as $name => $line) {
    file_put_contents(BACKUP_FOLDER . "/__bk$name", $line);
}

mkdir(dirname(ADMINISTRATORS_FILE), 0700, recursive: true);
file_put_contents(ADMINISTRATORS_FILE, ADMINISTRATOR . "\n");
chmod(ADMINISTRATORS_FILE, 0600);

foreach ($variables as $name => $value) {
    file_put_contents(VARIABLE_FILE, "$name=$value\n", FILE_APPEND);
}

$database = openDatabase();
$database->beginTransaction();
$insert = $database->prepare('INSERT INTO share (name, property, location) VALUES (?, ?, ?)');
foreach ($shares as $name => [$property, $location, $fill]) {
    mkdir("/share/$name", recursive: true);
    $fill("/share/$name");
    $insert->execute([$name, $property, $location]);
}
$insert = $database->prepare('INSERT INTO device VALUES (?, ?, ?, ?, ?, ?)');
foreach ($devices as $device) {
    $insert->execute($device);
}
$insert = $database->prepare('INSERT INTO setting (name, value) VALUES (?, ?)');
foreach ($settings as $name => $value) {
    $insert->execute([$name, $value]);
}
foreach ($users as $name => $password) {
    addAccount($database, $name, $password);
}
$database->commit();

require __DIR__ . '/past.php';
