var p = new TokenProvider(); p.x = 1; for (var k in p) print(k); Object.getPrototypeOf(p); JSON.stringify(p); p + ""; p.toString();
