<?php
// SPDX-License-Identifier: MIT
//
// The area of the administration layer that belongs to the control module.
declare(strict_types=1);

require __DIR__ . '/api.php';
require __DIR__ . '/settings.php';

/** Stores the time. The sample appliance does not set its host's clock. */
function tovSetUtcSysTime(string ...$time): void
{
    keepSetting('time', checkValue('a time', '/^\d\d:\d\d:\d\d$/D', $time));
}

serve(['tovSetUtcSysTime' => tovSetUtcSysTime(...)], $argv);
