# SPDX-License-Identifier: MIT
"""Calls the Python client: driver.py [asyncio].

Standard input is an object with the plugin, the members and the options. With asyncio, the call is
cancelled once the file "cancel" exists. Writes an object with "result" or "error".
"""

import asyncio
import json
import os
import sys

import certbridge


async def ask(plugin, cancel, arguments):
    task = asyncio.ensure_future(certbridge.get_certificate_async(plugin, **arguments))
    if cancel:
        while not os.path.exists(cancel):
            await asyncio.sleep(0.01)
        task.cancel()
    return await task


def run(plugin, members, options, cancel=None):
    if "confine" in options:
        options["confine"] = certbridge.Confinement(**options["confine"])
    arguments = {**options, **members}
    if sys.argv[1:] == ["asyncio"]:
        return asyncio.run(ask(plugin, cancel, arguments))
    return certbridge.get_certificate(plugin, **arguments)


try:
    answer = {"result": run(**json.load(sys.stdin))}
except (Exception, asyncio.CancelledError) as error:
    answer = {"error": f"{type(error).__name__}: {error}"}
print(json.dumps(answer))
