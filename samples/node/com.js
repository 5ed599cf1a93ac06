// SPDX-License-Identifier: MIT
// COM objects for Node.js on Windows, through IDispatch: members by their names, arguments and results by value. Needs
// the package koffi, which calls functions of DLLs. Works in 32-bit and 64-bit Node.js alike.
'use strict';
const koffi = require('koffi');

const word = koffi.sizeof('void *');
const variantSize = word === 8 ? 24 : 16;
const S_OK = 0, DISP_E_PARAMNOTFOUND = 0x80020004 | 0;
const VT = { empty: 0, i4: 3, r8: 5, bstr: 8, dispatch: 9, error: 10, bool: 11, variant: 12, ui1: 17, array: 0x2000 };

const ole32 = koffi.load('ole32.dll'), oleaut32 = koffi.load('oleaut32.dll'), kernel32 = koffi.load('kernel32.dll');
// Addresses are numbers here, so that they can be put into structures.
const CoInitialize = ole32.func('int32 __stdcall CoInitialize(void *reserved)');
const CLSIDFromProgID = ole32.func('int32 __stdcall CLSIDFromProgID(const char16_t *name, void *id)');
const CoCreateInstance = ole32.func(
    'int32 __stdcall CoCreateInstance(void *id, void *outer, uint32 context, void *iid, _Out_ void **object)');
const SysAllocStringLen = oleaut32.func('uintptr_t __stdcall SysAllocStringLen(const char16_t *text, uint32 length)');
const SysStringByteLen = oleaut32.func('uint32 __stdcall SysStringByteLen(uintptr_t text)');
const VariantClear = oleaut32.func('int32 __stdcall VariantClear(void *value)');
const SafeArrayCreateVector = oleaut32.func('uintptr_t __stdcall SafeArrayCreateVector(uint16 type, int32 lower, uint32 count)');
const SafeArrayGetDim = oleaut32.func('uint32 __stdcall SafeArrayGetDim(uintptr_t array)');
const SafeArrayGetUBound = oleaut32.func('int32 __stdcall SafeArrayGetUBound(uintptr_t array, uint32 dimension, _Out_ int32 *bound)');
const SafeArrayAccessData = oleaut32.func('int32 __stdcall SafeArrayAccessData(uintptr_t array, _Out_ uintptr_t *data)');
const SafeArrayUnaccessData = oleaut32.func('int32 __stdcall SafeArrayUnaccessData(uintptr_t array)');
const copyFrom = kernel32.func('void __stdcall RtlMoveMemory(void *target, uintptr_t source, uintptr_t count)');
const copyTo = koffi.load('ntdll.dll').func('void __stdcall RtlMoveMemory(uintptr_t target, void *source, uintptr_t count)');

// The places of IUnknown and IDispatch in the table of functions.
const Release = koffi.proto('uint32 __stdcall Release(void *self)');
const GetIDsOfNames = koffi.proto(
    'int32 __stdcall GetIDsOfNames(void *self, void *reserved, void *names, uint32 count, uint32 locale, _Out_ int32 *ids)');
const Invoke = koffi.proto('int32 __stdcall Invoke(void *self, int32 id, void *reserved, uint32 locale, uint16 flags, ' +
    'void *arguments, void *result, void *exception, void *argumentError)');
const places = new Map([[Release, 2], [GetIDsOfNames, 5], [Invoke, 6]]);

const noId = Buffer.alloc(16);
const IID_IDispatch = Buffer.from('0004020000000000c000000000000046', 'hex');
const METHOD = 1, PROPERTYGET = 2, PROPERTYPUT = 4, DISPID_PROPERTYPUT = -3;

function failIf(status, what) {
    if (status < S_OK) throw new Error(`${what}: 0x${(status >>> 0).toString(16)}`);
}
function call(object, proto, ...rest) {
    const table = koffi.decode(object, 'void *');
    return koffi.call(koffi.decode(table, places.get(proto) * word, 'void *'), proto, object, ...rest);
}
const readAddress = (buffer, at) => word === 8 ? buffer.readBigUInt64LE(at) : buffer.readUInt32LE(at);
function writeAddress(buffer, address, at) {
    if (word === 8) buffer.writeBigUInt64LE(BigInt(address), at);
    else buffer.writeUInt32LE(Number(address), at);
}

// A value as a VARIANT; strings and arrays in it are freed by VariantClear, objects stay the caller's.
function write(value, buffer, at) {
    const put = (type) => buffer.writeUInt16LE(type, at);
    if (value === undefined) { // an argument that is left out
        put(VT.error);
        buffer.writeInt32LE(DISP_E_PARAMNOTFOUND, at + 8);
    } else if (typeof value === 'boolean') {
        put(VT.bool);
        buffer.writeInt16LE(value ? -1 : 0, at + 8);
    } else if (typeof value === 'number') {
        const isWhole = Number.isInteger(value) && value === (value | 0);
        put(isWhole ? VT.i4 : VT.r8);
        if (isWhole) buffer.writeInt32LE(value, at + 8);
        else buffer.writeDoubleLE(value, at + 8);
    } else if (typeof value === 'string') {
        put(VT.bstr);
        writeAddress(buffer, SysAllocStringLen(value, value.length), at + 8);
    } else if (value instanceof Uint8Array) {
        const array = SafeArrayCreateVector(VT.ui1, 0, value.length), data = [0];
        failIf(SafeArrayAccessData(array, data), 'SafeArrayAccessData');
        if (value.length !== 0) copyTo(data[0], value, value.length);
        SafeArrayUnaccessData(array);
        put(VT.array | VT.ui1);
        writeAddress(buffer, array, at + 8);
    } else if (value === null || value[pointerOf]) {
        put(VT.dispatch);
        writeAddress(buffer, value === null ? 0 : koffi.address(value[pointerOf]), at + 8);
    } else {
        throw new TypeError('no value for COM');
    }
}

// Bytes of an array in the order of memory: of two dimensions the first runs fastest.
function readBytes(array) {
    let count = 1;
    for (let i = 1; i <= SafeArrayGetDim(array); ++i) {
        const upper = [0];
        failIf(SafeArrayGetUBound(array, i, upper), 'SafeArrayGetUBound');
        count *= upper[0] + 1; // the component's arrays begin at 0
    }
    const bytes = Buffer.alloc(count), data = [0];
    failIf(SafeArrayAccessData(array, data), 'SafeArrayAccessData');
    if (count !== 0) copyFrom(bytes, data[0], count);
    SafeArrayUnaccessData(array);
    return bytes;
}

// What a VARIANT holds, which is freed; an object's reference is taken over.
function take(buffer) {
    const type = buffer.readUInt16LE(0);
    if (type === VT.dispatch) {
        const pointer = koffi.decode(buffer, 8, 'void *');
        return pointer === null ? null : wrap(pointer);
    }
    let value;
    switch (type) {
    case VT.empty: break;
    case VT.i4: value = buffer.readInt32LE(8); break;
    case VT.r8: value = buffer.readDoubleLE(8); break;
    case VT.bool: value = buffer.readInt16LE(8) !== 0; break;
    case VT.bstr: {
        const text = readAddress(buffer, 8), bytes = Buffer.alloc(SysStringByteLen(text));
        if (bytes.length !== 0) copyFrom(bytes, text, bytes.length);
        value = bytes.toString('utf16le');
        break;
    }
    case VT.array | VT.ui1: value = readBytes(readAddress(buffer, 8)); break;
    case 20: value = Number(buffer.readBigInt64LE(8)); break; // handles in 64 bits
    default: VariantClear(buffer); throw new TypeError(`a result of type ${type}`);
    }
    VariantClear(buffer);
    return value;
}

function invoke(object, name, flags, values) {
    const text = Buffer.from(name + '\0', 'utf16le'), names = Buffer.alloc(word), id = [0];
    writeAddress(names, koffi.address(text), 0);
    failIf(call(object, GetIDsOfNames, noId, names, 1, 0, id), name);
    const list = Buffer.alloc(variantSize * values.length || 1), result = Buffer.alloc(variantSize);
    values.forEach((value, i) => write(value, list, variantSize * (values.length - 1 - i))); // last one first
    const put = Buffer.alloc(4), parameters = Buffer.alloc(2 * word + 8);
    put.writeInt32LE(DISPID_PROPERTYPUT, 0);
    writeAddress(parameters, koffi.address(list), 0);
    writeAddress(parameters, flags === PROPERTYPUT ? koffi.address(put) : 0, word);
    parameters.writeUInt32LE(values.length, 2 * word);
    parameters.writeUInt32LE(flags === PROPERTYPUT ? 1 : 0, 2 * word + 4);
    const status = call(object, Invoke, id[0], noId, 0, flags, parameters, flags === PROPERTYPUT ? null : result, null, null);
    values.forEach((value, i) => {
        const at = variantSize * (values.length - 1 - i), type = list.readUInt16LE(at);
        if (type === VT.bstr || (type & VT.array) !== 0) VariantClear(list.subarray(at, at + variantSize));
    });
    failIf(status, name);
    return take(result);
}

const pointerOf = Symbol('the object');
const released = new FinalizationRegistry((pointer) => call(pointer, Release));

// An object whose members are COM's: object.get('Width'), object.set('Tag', 1), and every other name is a method.
function wrap(pointer) {
    const object = new Proxy({}, {
        get(_, name) {
            if (name === pointerOf) return pointer;
            if (typeof name === 'symbol') return undefined;
            if (name === 'get') return (property) => invoke(pointer, property, PROPERTYGET, []);
            if (name === 'set') return (property, value) => invoke(pointer, property, PROPERTYPUT, [value]);
            return (...values) => invoke(pointer, name, METHOD, values);
        },
    });
    released.register(object, pointer);
    return object;
}

let isStarted = false;
function createObject(name) {
    if (!isStarted) failIf(CoInitialize(null), 'CoInitialize');
    isStarted = true;
    const id = Buffer.alloc(16), object = [null], inProcess = 1;
    failIf(CLSIDFromProgID(name, id), name);
    failIf(CoCreateInstance(id, null, inProcess, IID_IDispatch, object), name);
    return wrap(object[0]);
}

module.exports = { createObject };
