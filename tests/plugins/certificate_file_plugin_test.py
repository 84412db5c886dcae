# SPDX-License-Identifier: MIT
"""Asks certificate_file_plugin, through certbridge, about files.

Usage: certificate_file_plugin_test.py CERTBRIDGE PLUGIN
"""
import os, sys, tempfile
from certificates import CERTIFICATES, check_rows, make

COMMAND = [os.path.abspath(path) for path in sys.argv[1:3]]
with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    make(CERTIFICATES)
    sys.exit(check_rows("certificate_file_plugin.txt", COMMAND))
