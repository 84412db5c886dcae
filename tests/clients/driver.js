// SPDX-License-Identifier: MIT
// Calls the Node.js client, as driver.py does the Python client.
"use strict";

const fs = require("fs");

const { getCertificate } = require(process.env.CLIENT);

function run({ plugin, members, options, cancel }) {
    const { timeout, max_answer: maxAnswer, confine } = options;
    const controller = new AbortController();
    if (cancel) {
        const timer = setInterval(() => {
            if (!fs.existsSync(cancel)) return;
            clearInterval(timer);
            controller.abort();
        }, 10);
    }
    return getCertificate(plugin, members, {
        timeout: timeout * 1000, maxAnswer, confine, signal: controller.signal,
    });
}

run(JSON.parse(fs.readFileSync(0, "utf8"))).then(
    (result) => console.log(JSON.stringify({ result })),
    (error) => console.log(JSON.stringify({ error: `${error.name}: ${error.message}` })),
);
