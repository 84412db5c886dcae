# SPDX-License-Identifier: MIT
# Completion of certbridge-check for fish.

function __certbridge_check_ids
    certbridge-check --list 2>/dev/null | string replace -r ' +' \t
end

complete -c certbridge-check -l request -r -d 'Send the request in a file'
complete -c certbridge-check -l include -x -a '(__fish_append , (__certbridge_check_ids))' -d 'Run only these checks'
complete -c certbridge-check -l exclude -x -a '(__fish_append , (__certbridge_check_ids))' -d 'Do not run these checks'
complete -c certbridge-check -l repeat -x -d 'Run each check repeatedly until it fails'
complete -c certbridge-check -l fuzz -x -d 'Send random requests'
complete -c certbridge-check -l seed -x -d 'Repeat the random requests of an earlier run'
complete -c certbridge-check -l low-memory -d 'Let memory run out during a request'
complete -c certbridge-check -l timeout -x -d 'Time limit for each check'
complete -c certbridge-check -l in-process -d 'Run all checks in one process'
complete -c certbridge-check -l only-failed -d 'Leave passed and skipped checks out'
complete -c certbridge-check -l json -d 'Report as JSON'
complete -c certbridge-check -l junit -d 'Report as JUnit XML'
complete -c certbridge-check -l tap -d 'Report in the Test Anything Protocol'
complete -c certbridge-check -l list -d 'List all checks'
complete -c certbridge-check -s h -l help -d 'Show a summary'
complete -c certbridge-check -l version -d 'Show the version'
