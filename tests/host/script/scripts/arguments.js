// The arguments, one a line.
print(arguments.length);
arguments.forEach(function (text) {
    print("<" + text + ">");
});
