<?php
// SPDX-License-Identifier: MIT
//
// Common parts of the administration scripts. A script is called with the name of one of its functions
// and the arguments. It ends with 0, or with 1 and a reason on standard error if the function fails.
declare(strict_types=1);

require __DIR__ . '/database.php';

/** @param array<string, callable> $functions by the name that callers use */
function serve(array $functions, array $argv): never
{
    $name = $argv[1] ?? '';
    try {
        if (!isset($functions[$name])) {
            throw new RuntimeException("no such function: \"$name\"");
        }
        $functions[$name](...array_slice($argv, 2));
    } catch (Throwable $failure) {
        fwrite(STDERR, basename($argv[0]) . ': ' . $failure->getMessage() . "\n");
        exit(1);
    }
    exit(0);
}

/** Writes a whole file or fails. */
function writeFile(string $path, string $content): void
{
    if (@file_put_contents($path, $content) !== strlen($content)) {
        throw new RuntimeException("cannot write \"$path\"");
    }
}
