// SPDX-License-Identifier: MIT

// Plugin template in Go: answers with the certificate in the PEM file that the member "file" of the
// request names. Replace answer() and the error codes.
//
//	go build -buildmode=c-shared -o my_plugin.so
package main

import (
	"bytes"
	"encoding/json"
	"io"
	"os"
	"strings"
)

// Callers make decisions by these numbers: once published, a number keeps its meaning.
const (
	invalidRequest = 1 // "file" is missing or not a file name
	notReadable    = 2 // the file cannot be opened or read, or is too large
	noCertificate  = 3 // the file contains no certificate in PEM form
	internal       = 4 // the plugin itself has failed
)

type failure struct {
	code    int
	message string
}

func (f *failure) Error() string { return f.message }

// An element of a request or of a reply.
type element struct {
	Name  string `json:"name"`
	Value any    `json:"value"`
}

const maxFileSize = 32768

// Returns the text of the first element with this name; empty if there is none or its value is not
// a string.
func getText(request []element, name string) string {
	for _, member := range request {
		if member.Name == name {
			text, _ := member.Value.(string)
			return text
		}
	}
	return ""
}

func readFile(name string) ([]byte, error) {
	file, err := os.Open(name)
	if err != nil {
		return nil, err
	}
	defer file.Close()
	content, err := io.ReadAll(io.LimitReader(file, maxFileSize))
	if err == nil && len(content) == maxFileSize {
		err = io.ErrShortBuffer
	}
	return content, err
}

// Returns the certificate; empty if there is none. A reply must be valid UTF-8, so all external
// bytes are checked.
func findCertificate(content []byte) string {
	endLine := []byte("-----END CERTIFICATE-----")
	begin := bytes.Index(content, []byte("-----BEGIN CERTIFICATE-----"))
	if begin < 0 {
		return ""
	}
	end := bytes.Index(content[begin:], endLine)
	if end < 0 {
		return ""
	}
	certificate := content[begin : begin+end+len(endLine)]
	isASCII := func(r rune) bool { return r > 0 && r < 0x7F }
	if bytes.IndexFunc(certificate, func(r rune) bool { return !isASCII(r) }) >= 0 {
		return ""
	}
	return string(certificate)
}

// Returns the elements of the response, or the failure to report.
func answer(request []element) ([]element, *failure) {
	name := getText(request, "file")
	if name == "" || strings.ContainsRune(name, 0) {
		return nil, &failure{invalidRequest, `member "file" must be a file name`}
	}
	content, err := readFile(name)
	if err != nil {
		return nil, &failure{notReadable, name + ": cannot be read"}
	}
	certificate := findCertificate(content)
	if certificate == "" {
		return nil, &failure{noCertificate, name + ": holds no certificate in PEM form"}
	}
	return []element{{"file", name}, {"pem", certificate}}, nil
}

// Returns the reply to a request, and whether it is a response. A panic must not leave the plugin.
func makeReply(request []byte) (reply []byte, isResponse bool) {
	defer func() {
		if recover() != nil {
			reply, isResponse = writeError(&failure{internal, "internal failure"}), false
		}
	}()
	var envelope struct{ Request []element }
	if err := json.Unmarshal(request, &envelope); err != nil {
		return writeError(&failure{internal, err.Error()}), false
	}
	response, problem := answer(envelope.Request)
	if problem != nil {
		return writeError(problem), false
	}
	return write("response", response), true
}

func writeError(problem *failure) []byte {
	return write("error", []element{
		{"errorCode", problem.code},
		{"erroMessage", problem.message}, // sic
	})
}

func write(listName string, list []element) []byte {
	reply, err := json.Marshal(map[string][]element{listName: list})
	if err != nil {
		panic(err)
	}
	return reply
}

func main() {} // required of a library, never called
