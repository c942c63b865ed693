// SPDX-License-Identifier: MIT
//
// collections.mjs: collections of the sample appliance that last as long as a test wants.
import { makeStatus } from "./share_status.mjs";

const FOLDER = "/var/held";

// Pages look at the names of processes, so these are PHP under other names.
const START = `#!/bin/sh
exec ${FOLDER}/vokcollect ${FOLDER}/collector.php
`;
const COLLECTOR = `<?php
$semaphore = "/etc/pelconfig/vokcontrol/__shrsem";
file_put_contents($semaphore, "\\1\\0" . pack("V", time()));
proc_close(proc_open(["${FOLDER}/du", "${FOLDER}/du.php", file_get_contents("${FOLDER}/share")], [], $pipes));
copy("${FOLDER}/status", "/etc/pelconfig/vokcontrol/__shrStatus");
file_put_contents($semaphore, "\\0\\0" . pack("V", time()));
`;
const DU = `<?php
while (file_exists("${FOLDER}/share")) {
    usleep(20000);
}
`;

function write(file, content) {
    return `echo ${Buffer.from(content).toString("base64")} | base64 -d >${file}`;
}

/** Puts a collector into the appliance that measures one share until it is released. */
export class Collections {
    #appliance;

    constructor(appliance) {
        this.#appliance = appliance;
    }

    /** From now on a collection measures this share, and in the end publishes these. */
    async hold(share, shares) {
        await this.#appliance.run(`mkdir -p ${FOLDER}
            cp /usr/bin/php ${FOLDER}/vokcollect
            cp /usr/bin/php ${FOLDER}/du
            ${write(`${FOLDER}/collector.php`, COLLECTOR)}
            ${write(`${FOLDER}/du.php`, DU)}
            ${write(`${FOLDER}/share`, `/share/${share}`)}
            ${write(`${FOLDER}/status`, makeStatus(shares))}
            rm -f /usr/bin/pelstatus
            ${write("/usr/bin/pelstatus", START)}
            chmod 755 /usr/bin/pelstatus`);
    }

    async release() {
        await this.#appliance.run(`rm -f ${FOLDER}/share`);
    }

    /** Ends the collection that runs as somebody does who pulls the plug. */
    async kill() {
        await this.#appliance.run("kill -9 $(pidof vokcollect)");
        await this.release();
    }

    /** Puts the real collector back; no other collection may run. */
    async remove() {
        await this.release();
        await this.#appliance.run(`ln -sfn vokcollect /usr/bin/pelstatus
            rm -f /etc/pelconfig/vokcontrol/__shrsem`);
    }
}
