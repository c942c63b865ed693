// SPDX-License-Identifier: MIT
//
// share_status.mjs: share statuses that tests publish.

/** A status with shares of these names, each of 5 MB with a backup of long ago. */
export function makeStatus(names) {
    const records = names.map((name) => {
        const record = Buffer.concat([Buffer.alloc(12), Buffer.from(name), Buffer.from("\n")]);
        record.writeUInt16LE(5, 0);
        record.write("M010220203", 2, "latin1");
        return record;
    });
    const header = Buffer.alloc(10);
    header.writeUInt16LE(names.length, 5);
    const payload = Buffer.concat([header, ...records]);
    const length = Buffer.alloc(4);
    length.writeUInt32LE(payload.length + 1);
    const check = payload.reduce((sum, byte) => (sum + byte) % 16, 0);
    return Buffer.concat([length, payload, Buffer.from([check]), Buffer.alloc(64)]);
}
