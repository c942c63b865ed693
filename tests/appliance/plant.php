<?php
// SPDX-License-Identifier: MIT
//
// usage: php plant.php            prints how many texts there are
//        php plant.php NUMBER     stores that text wherever the appliance stores one
//
// Each text tries to run "fire PLACE" by way of a shell. They are stored past the checks of the
// appliance's scripts, which would refuse most of them.
declare(strict_types=1);

require '/etc/inc/database.php';

const TEXTS = [
    'a`@`', 'a$(@)', 'a";@;"', "a';@;'", 'a;@;', 'a|@', 'a & @ & b', 'a && @', 'a"|@|"', "a\n@\n",
    "a\"\n@\n\"", 'a"`@`"', "a'`@`'", 'a\\\\`@`', 'a\\";@;\\"', 'a${x:-`@`}', 'a$((`@`))', '-n `@`',
    'x=$(@)', 'é`@`', "a`\n@\n`", 'a # `@`', 'a" > /tmp/canary-#; "', 'a > /tmp/canary-#', 'a"; if @; then :; fi; "',
    'a" && @ "', 'a"; @ #', "a'; @ #",
];

function text(int $number, string $place): string
{
    return str_replace(['@', '#'], ["fire $place", $place], TEXTS[$number]);
}

function plantRow(PDO $database, string $sql, string ...$values): void
{
    $database->prepare($sql)->execute($values);
}

function plant(int $number): void
{
    $database = openDatabase();
    $database->exec("DELETE FROM share WHERE name <> 'Documents'");
    $database->exec("DELETE FROM user WHERE name <> 'anna'");
    $database->exec('DELETE FROM device');
    plantRow($database, "INSERT INTO share VALUES (?, 'public', 'internal')", text($number, 'share'));
    plantRow($database, 'INSERT INTO user VALUES (?)', text($number, 'user'));
    $label = text($number, 'label');
    plantRow($database, "INSERT INTO device VALUES ('usb', ?, ?, ?, 1, ?)", $label, $label, $label, $label);
    foreach (['language', 'nmbdSysname'] as $setting) {
        plantRow($database, 'UPDATE setting SET value = ? WHERE name = ?', text($number, 'setting'), $setting);
    }
    $variables = '';
    foreach (['firsttime', 'pel_pubshare_name', 'default_public_share_name_en', 'raclient_raenabled',
        'ra_signUpUrl', 'ra_signInUrl', 'language_current'] as $name) {
        $variables .= "$name=" . text($number, 'variable') . "\n";
    }
    file_put_contents('/etc/pelconfig/system_var', $variables);
    foreach (['Documents', 'anna'] as $name) {
        file_put_contents("/etc/pelconfig/vokcontrol/__bksts/__bk$name", text($number, 'report'));
    }
    file_put_contents('/etc/pelconfig/vokcontrol/vokcontrol-private.txt', text($number, 'private'));
}

if ($argc === 1) {
    echo count(TEXTS), "\n";
} else {
    plant((int) $argv[1]);
}
