// Times the works of bench_peers.py with pkcs11js. Prints nanoseconds as JSON; ends with 77 when it is not
// installed.
// usage: pkcs11js_peer.cjs MODULE
"use strict";

let pkcs11js;
try {
  pkcs11js = require("pkcs11js");
} catch {
  process.exit(77);
}

const DATA = Buffer.alloc(32, "x");
const ROUNDS = 31;
const MICROSECONDS = 20000;

const processorTime = () => {
  const { user, system } = process.cpuUsage();
  return user + system;
};

/// The processor time of so many calls in microseconds.
const timeOf = (work, times) => {
  const begin = processorTime();
  for (let i = 0; i < times; ++i) work();
  return processorTime() - begin;
};

/// The processor time of one call in ns: the median of rounds that take a while each.
const medianTime = (work) => {
  let times = 1;
  while (timeOf(work, times) < MICROSECONDS) times *= 2;
  const rounds = Array.from({ length: ROUNDS }, () => (timeOf(work, times) * 1000) / times);
  return rounds.sort((a, b) => a - b)[ROUNDS >> 1];
};

const module_ = new pkcs11js.PKCS11();
module_.load(process.argv[2]);
module_.C_Initialize();
const session = module_.C_OpenSession(
  module_.C_GetSlotList(true)[0],
  pkcs11js.CKF_SERIAL_SESSION | pkcs11js.CKF_RW_SESSION,
);
module_.C_Login(session, pkcs11js.CKU_USER, "1234");

const findKey = (kind) => {
  module_.C_FindObjectsInit(session, [
    { type: pkcs11js.CKA_CLASS, value: kind },
    { type: pkcs11js.CKA_TOKEN, value: true },
    { type: pkcs11js.CKA_KEY_TYPE, value: pkcs11js.CKK_RSA },
  ]);
  const key = module_.C_FindObjects(session);
  module_.C_GetAttributeValue(session, key, [{ type: pkcs11js.CKA_ID }]);
  module_.C_FindObjectsFinal(session);
  return key;
};

const mechanism = { mechanism: pkcs11js.CKM_SHA1_RSA_PKCS, parameter: null };
const sign = () => {
  module_.C_SignInit(session, mechanism, findKey(pkcs11js.CKO_PRIVATE_KEY));
  return module_.C_Sign(session, DATA, Buffer.alloc(1024));
};
const signature = sign();
const verify = () => {
  module_.C_VerifyInit(session, mechanism, findKey(pkcs11js.CKO_PUBLIC_KEY));
  module_.C_Verify(session, DATA, signature);
};
const enumerate = () => {
  module_.C_FindObjectsInit(session, [
    { type: pkcs11js.CKA_CLASS, value: pkcs11js.CKO_CERTIFICATE },
    { type: pkcs11js.CKA_TOKEN, value: true },
  ]);
  const names = [];
  for (let found = module_.C_FindObjects(session); found; found = module_.C_FindObjects(session)) {
    const [id] = module_.C_GetAttributeValue(session, found, [{ type: pkcs11js.CKA_ID }]);
    names.push(id.value.toString());
  }
  module_.C_FindObjectsFinal(session);
  return names;
};

console.log(
  JSON.stringify({
    sign: medianTime(sign),
    verify: medianTime(verify),
    enumerate: medianTime(enumerate),
  }),
);
