# What a build says about its own updates: where the feed is, whose signature is trusted, how the copy reaches users.

set(FERROBANK_UPDATE_FEED "" CACHE STRING "https address of the update feed; empty builds a copy without updates")
set(FERROBANK_UPDATE_KEYS "" CACHE STRING "Public ed25519 keys in base64, separated by semicolons: current, spare")
set(FERROBANK_UPDATE_CHANNELS "" CACHE STRING "Channels beside the default one, separated by semicolons")
set(FERROBANK_INSTALL_KIND "development" CACHE STRING "How this build reaches users")
set_property(CACHE FERROBANK_INSTALL_KIND PROPERTY STRINGS development folder package store)
set(FERROBANK_INSTALL_ADVICE "" CACHE STRING "How users of a package get the next version, for example a command")

# One key of the property list and its list of strings; nothing for an empty list.
function(ferrobank_plist_strings key values result)
    set(text "")
    if(NOT values STREQUAL "")
        set(text "    <key>${key}</key>\n    <array>\n")
        foreach(value IN LISTS values)
            string(APPEND text "        <string>${value}</string>\n")
        endforeach()
        string(APPEND text "    </array>\n")
    endif()
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

set(FERROBANK_UPDATE_SETTINGS "")
if(FERROBANK_UPDATE_FEED)
    # A copy with a damaged key, with one that can be lost, or without a host to ask could never be updated again.
    if(NOT FERROBANK_UPDATE_FEED MATCHES "^https://[A-Za-z0-9.-]+(:[0-9]+)?(/[^ <>&]*)?$")
        message(FATAL_ERROR "FERROBANK_UPDATE_FEED is no https address with a host: ${FERROBANK_UPDATE_FEED}")
    endif()
    string(REPEAT "[A-Za-z0-9+/]" 42 base64)
    foreach(key IN LISTS FERROBANK_UPDATE_KEYS)
        # 32 bytes: the last letter carries four bits, and the two below them are none.
        if(NOT key MATCHES "^${base64}[AEIMQUYcgkosw048]=$")
            message(FATAL_ERROR "FERROBANK_UPDATE_KEYS holds what is no public key: '${key}'")
        endif()
    endforeach()
    set(distinct ${FERROBANK_UPDATE_KEYS})
    list(REMOVE_DUPLICATES distinct)
    list(LENGTH distinct count)
    if(count LESS 2)
        message(FATAL_ERROR "FERROBANK_UPDATE_KEYS needs two public keys: the one that signs, and a spare one.")
    endif()
    ferrobank_plist_strings(SUPublicEDKeys "${FERROBANK_UPDATE_KEYS}" keys)
    ferrobank_plist_strings(FBUpdateChannels "${FERROBANK_UPDATE_CHANNELS}" channels)
    # A program beside the clock is rarely looked at: it checks and updates without a question.
    string(CONCAT FERROBANK_UPDATE_SETTINGS
                  "    <key>SUFeedURL</key>\n    <string>${FERROBANK_UPDATE_FEED}</string>\n"
                  "${keys}${channels}"
                  "    <key>SUEnableAutomaticChecks</key>\n    <true/>\n"
                  "    <key>SUAutomaticallyUpdate</key>\n    <true/>\n"
                  "    <key>SUVerifyUpdateBeforeExtraction</key>\n    <true/>\n"
                  "    <key>SURequireSignedFeed</key>\n    <true/>\n")
endif()
