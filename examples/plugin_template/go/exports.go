// SPDX-License-Identifier: MIT
package main

// #include <stdlib.h>
import "C"
import "unsafe"

// The reply is a copy outside the memory of Go, which the garbage collector neither moves nor frees.
// It is kept until the next call, long after certbridge has read it.
var reply *C.char

//export answerRequest
func answerRequest(aRequest *C.char, aResponse **C.char, aError **C.char) {
	text, isResponse := makeReply([]byte(C.GoString(aRequest)))
	C.free(unsafe.Pointer(reply))
	reply = C.CString(string(text))
	if isResponse {
		*aResponse = reply
	} else {
		*aError = reply
	}
}
