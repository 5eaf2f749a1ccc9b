// A client of a host's status socket that shares no code with the host: it uses Debian's Varlink
// library. Calls every method, and compares each reply with the interface description that the host
// itself returns: every field of a reply is declared, and every declared field is there, with its
// type.
//
// usage: status-client SOCKET [COMMAND [ARGUMENT...]]
// COMMAND must cause an event on the board and change an LED. The client runs it once it monitors both.
package main

import (
	"bytes"
	"context"
	"encoding/json"
	"fmt"
	"os"
	"os/exec"
	"strings"

	"github.com/varlink/go/varlink"
	"github.com/varlink/go/varlink/idl"
)

const host, standard = "org.boarddrivers.Host", "org.varlink.service"

var background = context.Background()
var faults = 0
var last interface{} // the reply that was received last

func fault(format string, values ...interface{}) {
	fmt.Fprintf(os.Stderr, format+"\n", values...)
	faults++
}

func must(err error, what string) {
	if err != nil {
		fmt.Fprintf(os.Stderr, "%s: %v\n", what, err)
		os.Exit(1)
	}
}

func connect() *varlink.Connection {
	connection, err := varlink.NewConnection(background, "unix:"+os.Args[1])
	must(err, os.Args[1])
	return connection
}

// The description of an interface. The library's parser accepts only names in lower case.
func describe(connection *varlink.Connection, name string) *idl.IDL {
	text, err := connection.GetInterfaceDescription(background, name)
	must(err, name)
	description, err := idl.New(strings.Replace(text, name, strings.ToLower(name), 1))
	must(err, "the description of "+name)
	return description
}

// Reports each part of `value` that does not match the type.
func check(description *idl.IDL, place string, value interface{}, kind *idl.Type) {
	isGood := true
	switch kind.Kind {
	case idl.TypeBool:
		_, isGood = value.(bool)
	case idl.TypeInt, idl.TypeFloat:
		number, isNumber := value.(json.Number)
		isWhole := !strings.ContainsAny(number.String(), ".eE")
		isGood = isNumber && (isWhole || kind.Kind == idl.TypeFloat)
	case idl.TypeString:
		_, isGood = value.(string)
	case idl.TypeObject:
		_, isGood = value.(map[string]interface{})
	case idl.TypeEnum:
		isGood = false
		for _, field := range kind.Fields {
			isGood = isGood || value == field.Name
		}
	case idl.TypeMaybe:
		if value != nil {
			check(description, place, value, kind.ElementType)
		}
	case idl.TypeArray:
		var elements []interface{}
		elements, isGood = value.([]interface{})
		for i, element := range elements {
			check(description, fmt.Sprintf("%s[%d]", place, i), element, kind.ElementType)
		}
	case idl.TypeAlias:
		for _, alias := range description.Aliases {
			if alias.Name == kind.Alias {
				check(description, place, value, alias.Type)
				return
			}
		}
		fault("%s: its type %s is not declared", place, kind.Alias)
	case idl.TypeStruct:
		var members map[string]interface{}
		members, isGood = value.(map[string]interface{})
		declared := map[string]bool{}
		for _, field := range kind.Fields {
			declared[field.Name] = true
			if member, isThere := members[field.Name]; isThere {
				check(description, place+"."+field.Name, member, field.Type)
			} else if isGood {
				fault("%s: the declared field %s is missing", place, field.Name)
			}
		}
		for name := range members {
			if !declared[name] {
				fault("%s: the field %s is not declared", place, name)
			}
		}
	default:
		fault("%s: the test does not know its kind of type", place)
	}
	if !isGood {
		fault("%s: %v is not of the declared type", place, value)
	}
}

func decode(bytesOfValue []byte) (value interface{}) {
	decoder := json.NewDecoder(bytes.NewReader(bytesOfValue))
	decoder.UseNumber()
	must(decoder.Decode(&value), "a reply")
	return value
}

// Calls a method, which must fail with the error `name`.
func expectError(connection *varlink.Connection, method, name string, parameters interface{}) {
	var reply json.RawMessage
	err := connection.Call(background, method, parameters, &reply)
	if err == nil || err.Error() != name {
		fault("%s fails with %v (expected %s)", method, err, name)
	}
}

type receiver = func(context.Context, interface{}) (uint64, error)

// Receives the next reply to a call, checks it, and returns whether another one follows.
func receive(description *idl.IDL, method *idl.Method, next receiver) bool {
	var reply json.RawMessage
	flags, err := next(background, &reply)
	must(err, method.Name)
	last = decode(reply)
	check(description, method.Name, last, method.Out)
	return flags&varlink.Continues != 0
}

func methodOf(description *idl.IDL, name string) *idl.Method {
	for _, method := range description.Methods {
		if method.Name == name {
			return method
		}
	}
	must(fmt.Errorf("is not declared"), name)
	return nil
}

func main() {
	connection := connect()
	var vendor, product, version, url string
	var interfaces []string
	must(connection.GetInfo(background, &vendor, &product, &version, &url, &interfaces), "GetInfo")
	if fmt.Sprint(interfaces) != "["+standard+" "+host+"]" {
		fault("the interfaces are %v", interfaces)
	}
	description, service := describe(connection, host), describe(connection, standard)
	_, err := connection.Send(background, host+".Status", nil, varlink.Oneway)
	must(err, "a call without a reply")
	for _, method := range description.Methods {
		if strings.HasPrefix(method.Name, "Monitor") {
			continue
		}
		next, err := connection.Send(background, host+"."+method.Name, nil, 0)
		must(err, method.Name)
		if receive(description, method, next) {
			fault("%s promises another reply", method.Name)
		}
	}
	info, err := connection.Send(background, standard+".GetInfo", nil, 0)
	must(err, "GetInfo")
	receive(service, methodOf(service, "GetInfo"), info)

	expectError(connection, "org.none.Status", standard+".InterfaceNotFound", nil)
	expectError(connection, host+".None", standard+".MethodNotFound", nil)
	expectError(connection, host+".Leds", standard+".InvalidParameter", map[string]int{"name": 1})
	for _, name := range []string{".Monitor", ".MonitorLeds"} {
		expectError(connection, host+name, standard+".ExpectedMore", nil)
	}
	expectError(connection, host+".Leds", host+".NoSuchLed", map[string]string{"name": "none"})

	monitors := map[string]receiver{}
	for _, name := range []string{"MonitorLeds", "Monitor"} {
		next, err := connect().Send(background, host+"."+name, nil, varlink.More)
		must(err, name)
		if !receive(description, methodOf(description, name), next) {
			fault("%s promises no news", name)
		}
		monitors[name] = next
	}
	if faults == 0 && len(os.Args) > 2 {
		must(exec.Command(os.Args[2], os.Args[3:]...).Run(), os.Args[2])
		for _, name := range []string{"MonitorLeds", "Monitor"} {
			if !receive(description, methodOf(description, name), monitors[name]) {
				fault("%s promises no further news", name)
			}
		}
		event, _ := last.(map[string]interface{})["event"].(map[string]interface{})
		for _, key := range []string{"event", "time", "text"} {
			if _, isText := event[key].(string); !isText {
				fault("the event %v has no %s", event, key)
			}
		}
	}
	must(connection.Close(), "close")
	if faults > 0 {
		os.Exit(1)
	}
	fmt.Printf("%d methods answer as declared\n", len(description.Methods))
}
