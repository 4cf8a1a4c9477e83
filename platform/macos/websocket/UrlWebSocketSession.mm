// SPDX-License-Identifier: MIT

#import "platform/macos/websocket/UrlWebSocketSession.h"

#import <dispatch/dispatch.h>

#include "platform/macos/Conversions.h"
#import "platform/macos/Strings.h"
#import "platform/macos/websocket/UrlWebSocketTask.h"

using tarvik::macdesktop::UrlWebSocketTask;
using tarvik::platform::WebSocketSessionDelegate;

namespace {

constexpr tarvik::Seconds invalidationDelay(10);

// For a task that is cancelled before it asks for anything.
NSURL* _Nonnull unreachableUrl() {
    return static_cast<NSURL* _Nonnull>([NSURL URLWithString:@"wss://invalid."]);
}

}  // namespace

@interface TarvikSocketDelegate : NSObject <NSURLSessionWebSocketDelegate>
- (instancetype)initWithDelegate:(std::weak_ptr<WebSocketSessionDelegate>)delegate;
- (void)holdForTask:(std::shared_ptr<UrlWebSocketTask>)task;
@end

// The fields are written before the connection is resumed. From then on only the delegate queue
// uses them.
@implementation TarvikSocketDelegate {
    std::weak_ptr<WebSocketSessionDelegate> _weakDelegate;
    std::shared_ptr<WebSocketSessionDelegate> _delegate;
    std::shared_ptr<UrlWebSocketTask> _task;
}

- (instancetype)initWithDelegate:(std::weak_ptr<WebSocketSessionDelegate>)delegate {
    if ((self = [super init])) {
        _weakDelegate = delegate;
    }
    return self;
}

- (void)holdForTask:(std::shared_ptr<UrlWebSocketTask>)task {
    _delegate = _weakDelegate.lock();
    _task = task;
}

- (void)URLSession:(NSURLSession*)session
          webSocketTask:(NSURLSessionWebSocketTask*)task
    didOpenWithProtocol:(NSString*)protocol {
    if (_delegate) {
        _delegate->didOpen(*_task, tarvik::macdesktop::utf8(protocol));
    }
}

- (void)URLSession:(NSURLSession*)session
       webSocketTask:(NSURLSessionWebSocketTask*)task
    didCloseWithCode:(NSURLSessionWebSocketCloseCode)closeCode
              reason:(NSData*)reason {
    if (_delegate) {
        _delegate->didClose(*_task, static_cast<int>(closeCode), tarvik::macdesktop::bytes(reason));
    }
}

- (void)URLSession:(NSURLSession*)session
                    task:(NSURLSessionTask*)task
    didCompleteWithError:(NSError*)error {
    // Queued, so that the system's own answer to a waiting receive comes first.
    [session.delegateQueue addOperationWithBlock:^{
      self->_task->didEnd(error);
    }];
    const dispatch_time_t end =
        dispatch_time(DISPATCH_TIME_NOW, tarvik::macdesktop::nanoseconds(invalidationDelay));
    dispatch_after(end, dispatch_get_main_queue(), ^{
      [session.delegateQueue addOperationWithBlock:^{
        self->_delegate = nullptr;
        self->_task = nullptr;
      }];
      [session finishTasksAndInvalidate];
    });
}

@end

namespace tarvik::macdesktop {

UrlWebSocketSession::UrlWebSocketSession(
    std::shared_ptr<platform::WebSocketSessionDelegate> delegate)
    : delegate_([[TarvikSocketDelegate alloc] initWithDelegate:delegate]),
      session_([NSURLSession
          sessionWithConfiguration:NSURLSessionConfiguration.defaultSessionConfiguration
                          delegate:delegate_
                     delegateQueue:nil]) {}

UrlWebSocketSession::~UrlWebSocketSession() {
    if (!hasConnection_) {
        [session_ finishTasksAndInvalidate];
    }
}

std::shared_ptr<platform::WebSocketTask> UrlWebSocketSession::webSocketTask(
    const platform::UrlRequest& request) {
    NSURL* url = [NSURL URLWithString:nsString(request.url)];
    const bool canOpen = url != nil && canStandInHeader(request.headerFields);
    NSMutableURLRequest* urlRequest = [NSMutableURLRequest
         requestWithURL:url != nil ? url : unreachableUrl()
            cachePolicy:static_cast<NSURLRequestCachePolicy>(request.cachePolicy)
        timeoutInterval:request.timeoutInterval];
    if (canOpen) {
        for (const auto& [name, value] : request.headerFields) {
            [urlRequest setValue:nsString(value) forHTTPHeaderField:nsString(name)];
        }
    }
    const auto task =
        std::make_shared<UrlWebSocketTask>([session_ webSocketTaskWithRequest:urlRequest], canOpen);
    hasConnection_ = true;
    [delegate_ holdForTask:task];
    return task;
}

}  // namespace tarvik::macdesktop
