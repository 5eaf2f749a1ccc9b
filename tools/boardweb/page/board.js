const events = new EventSource("/events");
for (const kind of ["host", "status", "board", "leds", "lost"])
    events.addEventListener(kind, (message) => {
        document.getElementById("events").append(`${kind} ${message.data}\n`);
    });
